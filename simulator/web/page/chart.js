// The chart on the screen: draws what is seen of it, once a frame at most, and follows what comes.
import {element, lanes} from '/format.js';
import {Filter} from '/events.js';
import {Layout, rowHeight} from '/layout.js';
import {drawRow, geometryOf, laneLines, svg} from '/picture.js';

const tolerance = 4;
// How far a pointer may move between press and release, in pixels.
const stillness = 8;

/** A list of events that a person scrolls, filters, pauses and selects from. */
export class Chart {
  constructor(events, select) {
    this.events = events;
    this.select = select;
    this.filter = new Filter();
    this.layout = new Layout(this.filter);
    this.view = document.getElementById('chart');
    this.extent = document.getElementById('extent');
    this.heads = document.getElementById('lanes');
    this.latest = document.getElementById('latest');
    this.picture = svg('svg', {class: 'picture', role: 'presentation'});
    this.extent.append(this.picture);
    this.isFollowing = true;
    this.isPaused = false;
    this.frame = 0;
    this.makeHeads();
    this.listen();
    this.resize();
  }

  listen() {
    this.events.listeners.push((fresh, isShortened) => this.take(fresh, isShortened));
    this.view.addEventListener('scroll', () => this.scrolled());
    this.view.addEventListener('pointerdown', (press) => this.pressedAt(press));
    this.view.addEventListener('pointerup', (release) => this.releasedAt(release));
    this.view.addEventListener('pointercancel', () => delete this.press);
    this.view.addEventListener('click', (click) => this.clicked(click));
    this.view.addEventListener('keydown', (key) => this.pressed(key));
    this.latest.addEventListener('click', () => this.follow());
    new ResizeObserver(() => this.resize()).observe(this.view);
  }

  makeHeads() {
    for (const lane of lanes) {
      const box = element('input', {type: 'checkbox', value: lane.id, checked: true});
      box.addEventListener('change', () => {
        this.filter.hiddenLanes[box.checked ? 'delete' : 'add'](lane.id);
        this.rebuild();
      });
      this.heads.append(element('label', {}, box,
        element('span', {class: 'long'}, lane.name), element('span', {class: 'short'}, lane.short)));
    }
  }

  take(fresh, isShortened) {
    if (isShortened) {
      this.shorten();
    } else if (!this.isPaused) {
      this.layout.append(fresh);
    }
    this.draw();
  }

  setPaused(isPaused) {
    this.isPaused = isPaused;
    this.pausedAfter = this.events.dropped + this.events.list.length;
    this.rebuild();
  }

  /** How many of the events are older than the pause; all of them when there is none. */
  get shownUpTo() {
    const {dropped, list} = this.events;
    return this.isPaused ? Math.max(0, this.pausedAfter - dropped) : list.length;
  }

  fillLayout() {
    this.layout.clear();
    this.layout.append(this.events.list.slice(0, this.shownUpTo));
  }

  // The oldest events have gone; what is seen stays where it is on the screen.
  shorten() {
    const {scrollTop} = this.view;
    const seen = this.layout.eventRowFrom(this.layout.indexAt(scrollTop), 1);
    this.fillLayout();
    if (!this.isFollowing) {
      const now = seen && this.layout.rowOf(seen.event);
      this.extent.style.height = `${this.layout.height}px`;
      this.view.scrollTop = now ? scrollTop + now.y - seen.y : 0;
    }
  }

  /** After the filter or the scale has changed; what came during a pause stays away. */
  rebuild() {
    this.fillLayout();
    const row = this.selected && this.layout.rowOf(this.selected);
    if (row && !this.isFollowing) {
      this.extent.style.height = `${this.layout.height}px`;
      this.reveal(row);
    }
    this.draw();
  }

  follow() {
    this.isFollowing = true;
    this.view.focus();
    this.draw();
  }

  scrolled() {
    const below = this.view.scrollHeight - this.view.clientHeight - this.view.scrollTop;
    this.isFollowing = below <= tolerance;
    this.draw();
  }

  resize() {
    const row = this.selected && !this.isFollowing && this.layout.rowOf(this.selected);
    if (row) {
      this.reveal(row);
    }
    this.geometry = geometryOf(Math.max(280, this.view.clientWidth));
    this.picture.setAttribute('width', this.geometry.width);
    this.heads.style.paddingLeft = `${this.geometry.left}px`;
    this.heads.style.paddingRight = `${this.view.offsetWidth - this.view.clientWidth}px`;
    this.draw();
  }

  /** Draws at the next frame, however often it is called before. */
  draw() {
    this.frame ||= requestAnimationFrame(() => {
      this.frame = 0;
      this.drawNow();
    });
  }

  drawNow() {
    const {clientHeight} = this.view;
    this.extent.style.height = `${this.layout.height}px`;
    if (this.isFollowing) {
      this.view.scrollTop = this.layout.height;
    }
    const top = Math.max(0, this.view.scrollTop - rowHeight);
    const height = Math.max(clientHeight, Math.min(clientHeight + 2 * rowHeight, this.layout.height - top));
    this.picture.setAttribute('height', height);
    this.picture.setAttribute('viewBox', `0 ${top} ${this.geometry.width} ${height}`);
    this.picture.style.top = `${top}px`;
    const rows = this.layout.between(top, top + height);
    this.picture.replaceChildren(
      svg('g', {role: 'presentation'}, ...laneLines(this.geometry, top, top + height)),
      ...rows.map((row) => drawRow(row, this.geometry, this.layout.eventCount,
        row.event !== undefined && row.event === this.selected)));
    this.describe(rows);
  }

  describe(rows) {
    const isSelectedDrawn = this.selected && rows.some((row) => row.event === this.selected);
    if (isSelectedDrawn) {
      this.view.setAttribute('aria-activedescendant', `event-${this.selected.run}-${this.selected.n}`);
    } else {
      this.view.removeAttribute('aria-activedescendant');
    }
    const all = this.shownUpTo;
    const shown = this.layout.eventCount;
    const older = this.events.dropped ? `, ${this.events.dropped} older ones in the saved trace only` : '';
    const waiting = this.isPaused ? `, paused: ${this.events.list.length - all} new` : '';
    document.getElementById('count').textContent =
      `${shown === all ? all : `${shown} of ${all}`} events${waiting}${older}`;
    const empty = document.getElementById('empty');
    empty.hidden = shown > 0;
    empty.textContent = all ? 'Nothing matches.' : 'Nothing has passed yet.';
    this.latest.hidden = this.isFollowing || shown === 0;
  }

  choose(row) {
    if (row) {
      this.selected = row.event;
      // What a person looks at does not run away.
      this.isFollowing = row === this.layout.rows.at(-1);
      this.select(row.event);
      this.reveal(row);
      this.draw();
    }
  }

  // A browser sends no click when what was pressed is drawn anew before the release, as it is while events come. The row
  // is the one that was pressed, wherever it has gone since.
  pressedAt(press) {
    const {left, top} = this.view.getBoundingClientRect();
    const isOnPicture = press.clientX - left < this.view.clientWidth;
    const row = this.layout.rows[this.layout.indexAt(press.clientY - top + this.view.scrollTop)];
    this.press = isOnPicture && press.isPrimary && press.button === 0
      ? {x: press.clientX, y: press.clientY, event: row?.event} : undefined;
  }

  releasedAt(release) {
    const {x, y, event} = this.press ?? {};
    delete this.press;
    if (event && Math.hypot(release.clientX - x, release.clientY - y) < stillness) {
      this.choose(this.layout.rowOf(event));
    }
  }

  // What reads the screen aloud clicks without a pointer.
  clicked(click) {
    const node = click.detail === 0 && click.target.closest('.event');
    const event = node && this.events.byId.get(node.id.replace('event-', ''));
    this.choose(event && this.layout.rowOf(event));
  }

  // A step further is a step of the picture; what is far away comes to its middle.
  reveal(row) {
    const {scrollTop, clientHeight} = this.view;
    const away = Math.max(scrollTop - row.y, row.y + row.height - scrollTop - clientHeight);
    if (away > 3 * rowHeight) {
      this.view.scrollTop = row.y - (clientHeight - row.height) / 2;
    } else if (row.y < scrollTop) {
      this.view.scrollTop = row.y;
    } else if (row.y + row.height > scrollTop + clientHeight) {
      this.view.scrollTop = row.y + row.height - clientHeight;
    }
  }

  pressed(key) {
    const last = this.layout.rows.length - 1;
    const now = this.selected ? this.layout.rows.findIndex((row) => row.event === this.selected) : -1;
    const page = Math.max(1, Math.floor(this.view.clientHeight / rowHeight) - 1);
    const moves = {
      ArrowDown: () => this.layout.eventRowFrom(now + 1, 1),
      ArrowUp: () => this.layout.eventRowFrom(now < 0 ? last : now - 1, -1),
      PageDown: () => this.layout.eventRowFrom(Math.min(last, now + page), -1),
      PageUp: () => this.layout.eventRowFrom(Math.max(0, now - page), 1),
      Home: () => this.layout.eventRowFrom(0, 1),
      End: () => this.layout.eventRowFrom(last, -1),
    };
    if (moves[key.key]) {
      key.preventDefault();
      this.choose(moves[key.key]());
    } else if (key.key === 'Enter' && this.selected) {
      key.preventDefault();
      // The details may have been closed.
      this.select(this.selected);
      document.getElementById('details').focus();
    }
  }
}
