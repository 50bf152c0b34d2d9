// Where each event stands in the picture.

export const rowHeight = 34;
const foldedHeight = 30;
const longPause = 1000;
const pixelsPerSecond = 40;

/** The rows of the picture from top to bottom: events that the filter accepts, and the pauses between them. */
export class Layout {
  constructor(filter) {
    this.filter = filter;
    this.isToScale = false;
    this.clear();
  }

  clear() {
    this.rows = [];
    this.height = 0;
    this.eventCount = 0;
    this.lastTime = undefined;
  }

  append(events) {
    for (const event of events) {
      if (this.filter.accepts(event)) {
        this.appendPause(event);
        this.push(rowHeight, {event, position: ++this.eventCount});
        this.lastTime = event.t;
      }
    }
  }

  appendPause(event) {
    const pause = event.t - (this.lastTime ?? event.t);
    const scaled = this.isToScale ? Math.max(0, pause * pixelsPerSecond / 1000) : 0;
    if (pause >= longPause) {
      this.push(Math.max(foldedHeight, scaled), {pause, isUntilRetry: Boolean(event.retryOf)});
    } else {
      this.height += scaled;
    }
  }

  push(height, row) {
    this.rows.push({y: this.height, height, ...row});
    this.height += height;
  }

  /** The index of the first row that ends below this height. */
  indexAt(y) {
    let low = 0;
    let high = this.rows.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (this.rows[middle].y + this.rows[middle].height <= y) {
        low = middle + 1;
      } else {
        high = middle;
      }
    }
    return low;
  }

  /** The rows that are seen between two heights. */
  between(top, bottom) {
    const seen = [];
    for (let i = this.indexAt(top); i < this.rows.length && this.rows[i].y < bottom; ++i) {
      seen.push(this.rows[i]);
    }
    return seen;
  }

  /** The first row of an event from this index on, or backwards when the step is -1. */
  eventRowFrom(index, step) {
    for (let i = index; i >= 0 && i < this.rows.length; i += step) {
      if (this.rows[i].event) {
        return this.rows[i];
      }
    }
    return undefined;
  }

  rowOf(event) {
    return this.rows.find((row) => row.event === event);
  }
}
