// The daemon's whole job, played on the device step by step. Every step is checked; each stands in the chart, too.
import {commandWord} from '/format.js';

const patienceMs = 15000;
const silenceMs = 1000;
const readingMs = 1000;

const request = (start) => (event) => event.kind === 'request' && event.title.startsWith(start);
const response = (status) => (event) => event.kind === 'response' && event.status === status;
const signal = (member, argument) => (event) =>
  event.kind === 'signal' && event.member === member && (argument === undefined || event.args[0] === argument);
const answered = (member) => (event) => event.kind === 'answer' && event.member === member && !event.failed;
const note = (title) => (event) => event.kind === 'note' && event.title === title;
const isRequest = (event) => event.kind === 'request';

const steps = [
  {
    says: 'The device boots without an API key: the daemon waits and asks for nothing.',
    async run(device) {
      await device.order('start-service qwixtd');
      await device.seen(note('com.qwixtd is on the bus'));
      await device.seen(answered('apiKey'));
      await device.seen(answered('remoteId'));
      await device.notSeen(isRequest);
    },
  },
  {
    says: 'Set-up finishes: the list is fetched, and the daemon says that it has started.',
    async run(device) {
      await device.order('set-remote-id device-7', 'set-key');
      await device.seen(request('GET '));
      await device.seen(response(200));
      await device.seen(signal('daemonDidStarted'));
    },
  },
  {
    says: 'A widget registers.',
    async run(device) {
      await device.order('create-widget clock', 'register clock "Wall clock" face');
      await device.seen((event) => request('POST ')(event) && event.title.includes('identifier=clock&name=Wall clock&'));
      device.clock = (await device.seen(signal('applicationRegistered', 'clock'))).args[1];
    },
  },
  {
    says: 'The widget changes its name.',
    async run(device) {
      await device.order(`update ${commandWord(device.clock)} clock "Kitchen clock" face`);
      await device.seen(request('PUT '));
      await device.seen(response(200));
    },
  },
  {
    says: 'The same update again: answered on the bus, and nothing is sent.',
    async run(device) {
      await device.order(`update ${commandWord(device.clock)} clock "Kitchen clock" face`);
      await device.seen(answered('updateQwixtApplication'));
      await device.notSeen(isRequest);
    },
  },
  {
    says: 'The server fails once with 503: the request is repeated after 5 s.',
    async run(device) {
      await device.order('fail 1 503', 'create-widget rain', 'register rain "Rain radar" map');
      await device.seen(response(503));
      await device.seen((event) => isRequest(event) && event.retryAfterMs >= 4700);
      device.rain = (await device.seen(signal('applicationRegistered', 'rain'))).args[1];
    },
  },
  {
    says: 'The internet goes and a request waits; it is sent when the internet is back.',
    async run(device) {
      await device.order('internet off');
      await device.seen(signal('internetAvailabilityChanged', false));
      await device.order('create-widget notes', 'register notes Notes list');
      await device.seen(answered('registerQwixtApplication'));
      await device.notSeen(isRequest);
      await device.order('internet on');
      await device.seen(signal('applicationRegistered', 'notes'));
    },
  },
  {
    says: 'A widget is deleted, and its application with it.',
    async run(device) {
      await device.order('delete-widget clock');
      await device.seen(request('DELETE '));
      await device.seen(signal('applicationDeleted', 'clock'));
    },
  },
  {
    says: 'A widget goes while the daemon is off; at the next start its application is cleaned up.',
    async run(device) {
      await device.order('stop-service qwixtd');
      await device.seen(note('com.qwixtd is gone from the bus'));
      await device.order('delete-widget rain', 'start-service qwixtd');
      await device.seen(request('GET '));
      await device.seen((event) => request('DELETE ')(event) && event.title.includes(`app_id=${device.rain}&`));
      await device.seen(signal('applicationDeleted', 'rain'));
    },
  },
  {
    says: 'The server is left with the one application of the one widget.',
    async run(device) {
      await device.order('list');
      const left = device.state().applications.map((record) => `${record.device} ${record.identifier}`);
      if (left.join() !== 'device-7 notes') {
        throw new Error(`the server holds: ${left.join(', ') || 'nothing'}`);
      }
    },
  },
];

/** What each step shows, in order. */
export const storySteps = steps.map((step) => step.says);

/** Plays the story; one at a time. */
export class Story {
  /** `send` sends a command, `state` gives the device's state; `report(index, problem, isStopped)` hears of each step. */
  constructor(events, send, state, report) {
    Object.assign(this, {events, send, state, report, mark: 0, isPlaying: false, isStopped: false});
  }

  async play() {
    if (this.isPlaying) {
      return;
    }
    Object.assign(this, {isPlaying: true, isStopped: false});
    let index = -1;
    try {
      await this.clear();
      for (index = 0; index < steps.length; ++index) {
        this.report(index);
        await this.order(`note ${commandWord(`${index + 1}. ${steps[index].says}`)}`);
        await steps[index].run(this);
        await this.sleep(readingMs);
      }
      this.report(steps.length);
    } catch (problem) {
      this.report(index, this.isStopped ? '' : problem.message, this.isStopped);
    }
    this.isPlaying = false;
  }

  /** The story goes on playing until the step at hand has noticed. */
  stop() {
    this.isStopped = true;
  }

  // A device that was never set up, and a server that knows nothing of it.
  async clear() {
    await this.order('heal', 'internet on', 'start-service daemon', 'start-service widget-manager');
    if (this.state().qwixtd.present) {
      await this.order('stop-service qwixtd');
      await this.seen(note('com.qwixtd is gone from the bus'));
    }
    await this.order('clear-key', 'clear-remote-id');
    await this.removeAll('delete-widget', (state) => state.widgets);
    await this.removeAll('remove-app', (state) => state.applications.map((record) => record.appId));
  }

  // The state lists the first of many only; the next come when those are gone.
  async removeAll(command, idsOf) {
    for (let ids = idsOf(this.state()); ids.length; ids = idsOf(this.state())) {
      await this.order(...ids.map((id) => `${command} ${commandWord(id)}`));
      await this.comesTrue(() => !ids.some((id) => idsOf(this.state()).includes(id)));
    }
  }

  async comesTrue(isTrue) {
    const end = performance.now() + patienceMs;
    while (!isTrue()) {
      this.goOnOrStop();
      if (performance.now() > end) {
        throw new Error(`the device did not follow within ${patienceMs / 1000} s`);
      }
      await this.sleep(20);
    }
  }

  /** From here on only what comes afterwards is seen. */
  async order(...lines) {
    this.mark = this.events.list.at(-1)?.n ?? 0;
    for (const line of lines) {
      this.goOnOrStop();
      const answer = await this.send(line);
      if (answer.startsWith('error')) {
        throw new Error(`${line}: ${answer}`);
      }
    }
  }

  /** Waits for an event; returns it. */
  async seen(isMeant, patience = patienceMs) {
    const end = performance.now() + patience;
    while (performance.now() < end) {
      this.goOnOrStop();
      const found = this.events.list.slice(-500).find((event) =>
        event.run === this.events.run && event.n > this.mark && isMeant(event));
      if (found) {
        return found;
      }
      await this.sleep(20);
    }
    throw new Error(`nothing of the kind came within ${patience / 1000} s`);
  }

  /** Watches for a while that nothing of the kind comes. */
  async notSeen(isMeant) {
    const unwanted = await this.seen(isMeant, silenceMs).catch(() => undefined);
    this.goOnOrStop();
    if (unwanted) {
      throw new Error(`not expected: ${unwanted.title}`);
    }
  }

  goOnOrStop() {
    if (this.isStopped) {
      throw new Error('stopped');
    }
  }

  sleep(ms) {
    return new Promise((resolve) => {
      setTimeout(resolve, ms);
    });
  }
}
