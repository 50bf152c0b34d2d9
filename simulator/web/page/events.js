// The events that the page has, oldest first.

const mostEvents = 100000;
const droppedAtOnce = 10000;

/** Keeps the newest 100,000 events, or as many as clear() says; the saved trace has more. */
export class Events {
  constructor() {
    this.listeners = [];
    this.clear('');
  }

  /** Forgets all; `most` events are kept from now on. */
  clear(run, most = mostEvents) {
    Object.assign(this, {most, list: [], byId: new Map(), answers: new Map(), widgets: new Map(), run, dropped: 0});
  }

  /** Numbers count anew in every run of the simulator. */
  beginRun(run) {
    const isAnother = this.run && this.run !== run;
    this.run = run;
    if (isAnother) {
      this.addNote(0, 'The simulator was started again');
    }
  }

  /** A remark of the page's own, under a number that no event has. */
  addNote(number, title) {
    this.add([{n: number, t: this.list.at(-1)?.t ?? Date.now(), kind: 'note', from: '', to: '', title}]);
  }

  /** Takes events of the present run; one that is there already is left out. */
  add(events) {
    const fresh = events.filter((event) => !this.byId.has(this.idOf(event.n)));
    for (const event of fresh) {
      event.run = this.run;
      this.list.push(event);
      this.byId.set(this.idOf(event.n), event);
      if (event.re) {
        this.answers.set(this.idOf(event.re), event);
      }
      if (event.widget) {
        this.widgets.set(event.widget, (this.widgets.get(event.widget) ?? 0) + 1);
      }
    }
    const isTooMany = this.list.length > this.most;
    if (isTooMany) {
      this.drop(Math.max(droppedAtOnce, this.list.length - this.most));
    }
    this.listeners.forEach((listener) => listener(fresh, isTooMany));
  }

  drop(count) {
    for (const event of this.list.splice(0, count)) {
      this.byId.delete(`${event.run}-${event.n}`);
      this.answers.delete(`${event.run}-${event.n}`);
      this.forgetWidget(event.widget);
    }
    this.dropped += count;
  }

  // A widget is known as long as an event is about it.
  forgetWidget(widget) {
    const left = (this.widgets.get(widget) ?? 0) - 1;
    if (left > 0) {
      this.widgets.set(widget, left);
    } else {
      this.widgets.delete(widget);
    }
  }

  idOf(number) {
    return `${this.run}-${number}`;
  }

  /** What led to an answer: the call or the request. */
  questionOf(event) {
    return event.re && this.byId.get(`${event.run}-${event.re}`);
  }

  /** What a call or a request was answered with, if it was. */
  answerOf(event) {
    return this.answers.get(`${event.run}-${event.n}`);
  }
}

/** Says which events a person wants to see. */
export class Filter {
  constructor() {
    this.hiddenLanes = new Set();
    this.widget = '';
    this.text = '';
    this.failuresOnly = false;
  }

  accepts(event) {
    const isHidden = this.hiddenLanes.has(event.from) || this.hiddenLanes.has(event.to);
    const isOfWidget = !this.widget || event.widget === this.widget;
    const isWanted = !this.failuresOnly || event.failed || Boolean(event.retryOf);
    return !isHidden && isOfWidget && isWanted && this.hasText(event);
  }

  hasText(event) {
    if (!this.text) {
      return true;
    }
    const where = [event.title, event.widget, event.bytes, event.args && JSON.stringify(event.args)].join('\n');
    return where.toLowerCase().includes(this.text);
  }
}

const isText = (value) => typeof value === 'string';
const isNumber = (value) => Number.isFinite(value) && Math.abs(value) <= 8.64e15;

// What the page relies on in an event: the first fields are in each, the others where they are needed.
const wanted = {n: isNumber, t: isNumber, kind: isText, from: isText, to: isText, title: isText};
const possible = {widget: isText, bytes: isText, service: isText, path: isText, interface: isText, member: isText,
  failure: isText, status: isNumber, ms: isNumber, re: isNumber, retryOf: isNumber, retryAfterMs: isNumber};

function wrongInEvent(event, places) {
  if (typeof event !== 'object' || event === null || Array.isArray(event)) {
    return 'is no event';
  }
  const isWrong = ([name, isRight]) => !isRight(event[name]);
  const isWrongIfThere = ([name, isRight]) => event[name] !== undefined && !isRight(event[name]);
  const [name] = Object.entries(wanted).find(isWrong) ?? Object.entries(possible).find(isWrongIfThere) ?? [];
  if (name) {
    return `has a wrong "${name}"`;
  }
  const isAcross = event.from === '' && event.to === '';
  if (!isAcross && !(places.includes(event.from) && places.includes(event.to))) {
    return 'is in a lane that does not exist';
  }
  const isWithoutBytes = event.kind === 'request' && event.bytes === undefined;
  const isWithoutTime = (event.retryOf !== undefined && event.retryAfterMs === undefined) ||
    (event.kind === 'response' && event.ms === undefined);
  return isWithoutBytes ? 'is a request without bytes' : isWithoutTime ? 'says not how long it took' : '';
}

/** Why this is no list of events that can be shown in lanes of these ids; empty when it is one. */
export function wrongInTrace(list, places) {
  if (!Array.isArray(list)) {
    return 'it holds no list of events';
  }
  for (const [i, event] of list.entries()) {
    const wrong = wrongInEvent(event, places);
    if (wrong) {
      return `entry ${i + 1} of its list ${wrong}`;
    }
  }
  return '';
}
