// Scripts of the page that need no browser.
import assert from 'node:assert/strict';
import {readFileSync} from 'node:fs';
import {test} from 'node:test';

// A script with all that it imports, as an address that can be imported.
function addressOf(name) {
  const text = readFileSync(new URL(`../../simulator/web/page/${name}`, import.meta.url), 'utf8')
    .replace(/from '\/(\w+\.js)'/g, (whole, needed) => `from '${addressOf(needed)}'`);
  return `data:text/javascript;base64,${Buffer.from(text).toString('base64')}`;
}

const script = (name) => import(addressOf(name));
const notes = (first, count) => Array.from({length: count}, (unused, i) =>
  ({n: first + i, t: first + i, kind: 'note', from: 'server', to: 'server', title: `note ${first + i}`}));

class FakeSource {
  constructor() {
    this.listeners = {};
    FakeSource.last = this;
  }

  addEventListener(name, listener) {
    this.listeners[name] = listener;
  }

  emit(name, value) {
    this.listeners[name]({data: JSON.stringify(value), lastEventId: 'a-1'});
  }

  close() {}
}

test('closedLink_handsOnNothingMore', async (context) => {
  const due = [];
  const pass = () => due.splice(0).forEach((run) => run());
  context.mock.method(globalThis, 'setTimeout', (run) => due.push(run));
  globalThis.EventSource = FakeSource;
  const {Link} = await script('link.js');
  const handed = [];
  const take = (what) => (value) => handed.push([what, value]);
  const link = new Link({events: take('events'), run: take('run'), state: take('state'), missing: take('missing'), connected() {}});

  FakeSource.last.emit('message', {n: 1});
  pass();
  FakeSource.last.emit('message', {n: 2});
  link.close();
  pass();
  FakeSource.last.emit('message', {n: 3});
  FakeSource.last.emit('state', {});
  pass();

  assert.deepEqual(handed, [['events', [{n: 1}]]]);
});

test('hundredThousandEvents_areHeldAndTheOldestGo', async () => {
  const {Events, Filter} = await script('events.js');
  const {Layout, rowHeight} = await script('layout.js');
  const events = new Events();
  const layout = new Layout(new Filter());
  let isShortened = false;
  events.listeners.push((fresh, shortened) => {
    isShortened ||= shortened;
    layout.append(fresh);
  });
  events.beginRun('a');

  for (let n = 1; n <= 105000; n += 1000) {
    events.add(notes(n, 1000));
  }
  events.add([{n: 105000, t: 105000}]);

  assert.equal(events.list.length, 95000);
  assert.equal(events.dropped, 10000);
  assert.equal(events.list[0].n, 10001);
  assert.equal(events.byId.size, 95000);
  assert.ok(isShortened);
  assert.ok(layout.between(50000 * rowHeight, 50010 * rowHeight).length <= 11);
});

test('storyThatWasStopped_endsBeforeItPlaysAgain', async () => {
  const {Story} = await script('story.js');
  const reports = [];
  const sent = [];
  let answer;
  const send = (line) => new Promise((resolve) => {
    sent.push(line);
    answer = () => resolve('');
  });
  const state = () => ({qwixtd: {present: false}, widgets: [], applications: []});
  const story = new Story({list: [], run: 'a'}, send, state, (...report) => reports.push(report));

  const first = story.play();
  story.stop();
  await story.play();
  assert.ok(story.isPlaying);
  answer();
  await first;

  assert.ok(!story.isPlaying);
  assert.deepEqual(sent, ['heal']);
  assert.deepEqual(reports, [[-1, '', true]]);
});

test('listOfTheWrongShape_isRefusedWithAReason', async () => {
  const {wrongInTrace} = await script('events.js');
  const {lanes} = await script('format.js');
  const places = lanes.map(({id}) => id);
  const [good] = notes(1, 1);
  const none = 'it holds no list of events';
  const rows = [
    [null, none], [{}, none], [5, none], ['[]', none],
    [[null], 'entry 1 of its list is no event'],
    [[good, 5], 'entry 2 of its list is no event'],
    [[[]], 'entry 1 of its list is no event'],
    [[{}], 'entry 1 of its list has a wrong "n"'],
    [[{...good, t: 1e300}], 'entry 1 of its list has a wrong "t"'],
    [[{...good, title: {}}], 'entry 1 of its list has a wrong "title"'],
    [[{...good, bytes: 7}], 'entry 1 of its list has a wrong "bytes"'],
    [[{...good, widget: []}], 'entry 1 of its list has a wrong "widget"'],
    [[{...good, from: 'elsewhere'}], 'entry 1 of its list is in a lane that does not exist'],
    [[{...good, from: ''}], 'entry 1 of its list is in a lane that does not exist'],
    [[{...good, kind: 'request'}], 'entry 1 of its list is a request without bytes'],
    [[{...good, kind: 'response'}], 'entry 1 of its list says not how long it took'],
    [[{...good, retryOf: 1}], 'entry 1 of its list says not how long it took'],
    [[], ''], [notes(1, 3), ''], [[{...good, from: '', to: ''}], ''],
  ];

  const found = rows.map(([list]) => wrongInTrace(list, places));

  assert.deepEqual(found, rows.map(([, wrong]) => wrong));
});

test('anyName_isOneWordOfACommand', async () => {
  const {commandWord} = await script('format.js');
  const names = ['', 'plain', 'two words', 'a "quoted" one', 'back\\slash', 'two\nlines\n\nmore', 'tab\there', 'return\rhere'];

  const words = names.map(commandWord);

  assert.deepEqual(words, ['""', '"plain"', '"two words"', '"a \\"quoted\\" one"', '"back\\\\slash"',
    '"two\\nlines\\n\\nmore"', '"tab\\there"', '"return here"']);
});

test('widgetOfWhichNoEventIsLeft_isForgotten', async () => {
  const {Events} = await script('events.js');
  const events = new Events();
  const about = (list, widgetOf) => list.map((event) => ({...event, widget: widgetOf(event.n)}));
  events.beginRun('a');

  events.add(about(notes(1, 20000), (n) => n === 7 ? 'stays' : `flood-${n}`));
  events.add(about(notes(20001, 80000), () => 'clock'));
  assert.equal(events.widgets.size, 20001);
  events.add(about(notes(100001, 1), () => 'stays'));
  events.add(notes(100002, 10000));

  assert.deepEqual([...events.widgets.keys()].sort(), ['clock', 'stays']);
});

test('keyInACommand_isHiddenHoweverTheCommandIsWritten', async () => {
  const {withoutKey} = await script('prompt.js');
  const secret = ['set-key KEY', '  set-key\tKEY', '"set-key" KEY', 'set\\-key KEY', 'set-key"" KEY', '"set"-"key" KEY',
    '""set-key "KEY', 'set-key "KEY', '"set-\\key" KEY', 'set-key KEY KEY', 'server-key KEY', '"server-key"\u00a0KEY',
    '\u0085set-key\u0085KEY'];
  const open = ['set-key', 'note set-key KEY', '"set-key KEY"', 'set-keyKEY', 'create-widget "a"', '', '"', '\\'];

  assert.deepEqual(secret.map(withoutKey), secret.map((line) => `${line.includes('server') ? 'server' : 'set'}-key ***`));
  assert.deepEqual(open.map(withoutKey), open);
});
