// The way to the simulator: its events come as a stream, commands go to it one by one.

const pauseMs = 500;

/** Reconnects by itself and goes on behind the last event that came. */
export class Link {
  /** The handlers are run(id), events(list), missing(first, last), state(object) and connected(yesOrNo). */
  constructor(handlers) {
    this.handlers = handlers;
    this.lastId = '';
    this.gathered = [];
    this.connect();
  }

  connect() {
    this.source = new EventSource(`/events?after=${encodeURIComponent(this.lastId)}`);
    this.source.addEventListener('open', () => this.handlers.connected(true));
    this.source.addEventListener('error', () => this.failed());
    this.source.addEventListener('message', (message) => this.take(message));
    this.source.addEventListener('run', (message) => this.afterGathered(() => this.handlers.run(JSON.parse(message.data))));
    this.source.addEventListener('missing', (message) =>
      this.afterGathered(() => this.handlers.missing(...JSON.parse(message.data))));
    this.source.addEventListener('state', (message) =>
      this.afterGathered(() => this.handlers.state(JSON.parse(message.data))));
  }

  /** Nothing comes any more, not even what has been gathered. */
  close() {
    this.isClosed = true;
    this.gathered = [];
    this.source.close();
  }

  // The browser gives some failures up for good.
  failed() {
    this.handlers.connected(false);
    if (this.source.readyState === EventSource.CLOSED) {
      this.source.close();
      setTimeout(() => this.isClosed || this.connect(), pauseMs);
    }
  }

  // What comes within one frame is handed on together.
  take(message) {
    if (this.isClosed) {
      return;
    }
    this.lastId = message.lastEventId;
    this.gathered.push(JSON.parse(message.data));
    if (this.gathered.length === 1) {
      setTimeout(() => this.handOn(), 16);
    }
  }

  handOn() {
    if (this.gathered.length) {
      this.handlers.events(this.gathered.splice(0));
    }
  }

  afterGathered(handle) {
    if (!this.isClosed) {
      this.handOn();
      handle();
    }
  }

  /** Sends a line of the prompt; returns its answer, or says why there is none. */
  async send(line) {
    try {
      const response = await fetch('/commands', {method: 'POST', body: line});
      return response.ok ? (await response.json()).answer : `error: ${(await response.text()).trim()}`;
    } catch {
      return 'error: the simulator does not answer';
    }
  }
}
