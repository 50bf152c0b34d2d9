// The page of the simulator in a real browser, on a real bus and with the real daemon.
import assert from 'node:assert/strict';
import {readFileSync} from 'node:fs';
import {createServer} from 'node:http';
import {after, before, test} from 'node:test';
import {arrowsOf, eventsOf, expectedArrows} from './arrows.mjs';
import {openChart} from './chartpage.mjs';
import {downloaded, openPage, startBrowser, takePicture, violations} from './browser.mjs';
import {Device, until} from './device.mjs';

const device = new Device();
const storysDevice = new Device();
let browser;
let storysPage;

// A device that is set up, with a widget whose registration failed once.
before(async () => {
  await device.start();
  device.type('set-remote-id device-9', 'set-key a-key-that-nobody-may-see', 'create-widget safe', 'fail 1 503',
    'register safe Safe face');
  browser = await startBrowser();
  // The story takes its time; it is played on a device of its own, and looked at by the last test.
  await storysDevice.start();
  storysPage = await openPage(browser, storysDevice.url);
  await storysPage.click('#play');
  await device.seen(/applicationRegistered\("safe"/);
});

after(async () => {
  await browser?.close();
  await device.stop();
  await storysDevice.stop();
});

const count = async (page) => Number(/^\d+/.exec(await page.textContent('#count'))?.[0] ?? 0);
const exported = async (page) => readFileSync(await downloaded(page, () => page.click('#export')), 'utf8');
const saved = (page) => downloaded(page, () => page.click('#save'));
const reveal = (page, text) => page.fill('#search', text);
const isOn = (page, name) => page.getByRole('switch', {name}).getAttribute('aria-checked');

/** Uses a switch of the page, and waits until the page knows. */
async function turn(page, name, to) {
  await page.getByRole('switch', {name}).click();
  await until(`${name} turned`, async () => (await isOn(page, name)) === String(to));
}

async function say(page, line) {
  await page.fill('#line', line);
  await page.press('#line', 'Enter');
}

/** Waits until the page shows an arrow or a note with this text. */
async function shown(page, text) {
  await reveal(page, text);
  await until(`"${text}" in the chart`, async () => (await count(page)) > 0);
  await reveal(page, '');
  await until('all events', async () => !(await page.textContent('#count')).includes(' of '));
}

/** Every page ends so: nothing was on its console, and it asked nobody else for anything. */
async function close(page) {
  assert.deepEqual(page.complaints, []);
  await page.context().close();
}

test('buttonsOfTheDevice_doWhatTheCommandsDo', async () => {
  const page = await openPage(browser, device.url);
  await until('the state', async () => (await isOn(page, 'Internet')) === 'true');

  await turn(page, 'Internet', false);
  await device.seen(/says internetAvailabilityChanged\(false\)/);
  await turn(page, 'Internet', true);
  await device.seen(/says internetAvailabilityChanged\(true\)/);
  await turn(page, 'widget.manager', false);
  await device.seen(/widget\.manager stops/);
  await turn(page, 'widget.manager', true);
  await page.getByLabel('Id of a widget to install').fill('lamp');
  await page.getByRole('button', {name: 'Install'}).click();
  await device.seen(/says newWidgetCreated\("simulated\.package", "lamp"\)/);
  await page.locator('#fault [name=count]').fill('2');
  await page.getByRole('button', {name: 'Arrange'}).click();
  await page.getByText('next 2: status 503').waitFor();
  await page.getByRole('button', {name: 'Heal'}).click();
  await page.getByText('next 2: status 503').waitFor({state: 'detached'});
  await page.locator('#ask [name=uuid]').fill('lamp');
  await page.getByRole('button', {name: 'Register'}).click();
  const [, appId] = await device.seen(/applicationRegistered\("lamp", "(app-\d+)", "face"\)/);
  await until('the application', async () => (await page.inputValue('#ask [name=app]')) === appId);
  await page.locator('#ask [name=name]').fill('A "lamp" \\ of mine');
  await page.getByRole('button', {name: 'Update'}).click();
  await device.seen(/PUT .*name=A "lamp" \\ of mine&/);
  await page.locator('#ask').getByRole('button', {name: 'Delete'}).click();
  await device.seen(/applicationDeleted\("lamp"/);
  await turn(page, 'lamp', false);

  await device.seen(/says widgetDeleted\("simulated\.package", "lamp"\)/);
  await close(page);
});

test('selectedEvent_showsTheExactBytesWithoutTheKey', async () => {
  const page = await openPage(browser, device.url);
  await shown(page, 'identifier=safe');

  await reveal(page, 'identifier=safe');
  await page.focus('#chart');
  await page.keyboard.press('End');

  const details = await page.textContent('#details');
  const body = 'id=device-9&identifier=safe&name=Safe&type=face';
  assert.match(details, /POST \/api\/v1\/qwixt\/apps HTTP\/1\.1\\r\\n\n/);
  assert.match(details, /Authorization: \*\*\*\\r\\n\n/);
  assert.ok(details.includes(`Content-Length: ${body.length}\\r\\n\n`) && details.includes(body), details);
  assert.match(details, /HTTP\/1\.1 200 OK\\r\\n\n[^]*"status":"registered"/);
  await page.getByLabel('Hexadecimal').check();
  assert.match(await page.textContent('#details'), /000000 {2}50 4f 53 54 20 2f 61 70 69/);
  await takePicture(page, 'details');
  const files = [readFileSync(await saved(page), 'utf8'), await exported(page), await page.content()];
  assert.equal(device.apiKey(), 'a-key-that-nobody-may-see');
  for (const secret of [device.apiKey(), Buffer.from(`:${device.apiKey()}`).toString('base64')]) {
    assert.ok(!files.some((file) => file.includes(secret)));
  }
  await close(page);
});

test('callsOfOtherPrograms_areArrowsToo', async () => {
  const page = await openPage(browser, device.url);

  device.callAsWidget('deleteQwixtApplication', 'app-99', 'stranger', 'face');
  await shown(page, 'deleteQwixtApplication("app-99", "stranger", "face")');

  await page.selectOption('#widget', 'stranger');
  const arrows = arrowsOf(await exported(page));
  assert.deepEqual(arrows.slice(0, 2).sort(), ['answer deleteQwixtApplication -> ()',
    'call deleteQwixtApplication("app-99", "stranger", "face")']);
  await page.getByRole('option', {name: 'call, deleteQwixtApplication'}).click();
  const details = await page.textContent('#details');
  assert.ok(details.includes('com.vorlet.qwixtd') && details.includes('"app-99"'), details);
  await page.getByRole('button', {name: 'Close the details'}).click();
  assert.ok(await page.locator('#details').isHidden());
  await close(page);
});

test('hostileNames_areText', async () => {
  const name = '<script>document.title=1</script>';
  const image = '"><img src=x onerror=document.title=2>';
  const page = await openPage(browser, device.url);

  await page.getByLabel('Id of a widget to install').fill(name);
  await page.getByRole('button', {name: 'Install'}).click();
  await page.locator('#ask [name=uuid]').fill(name);
  await page.locator('#ask [name=name]').fill(image);
  await page.getByRole('button', {name: 'Register'}).click();
  await shown(page, `name=${image}`);
  await reveal(page, image);
  await page.focus('#chart');
  await page.keyboard.press('Home');
  const file = await openPage(browser, `file://${await saved(page)}`);

  for (const one of [page, file]) {
    assert.equal(await one.title(), 'The device on a screen');
    assert.equal(await one.locator('img').count(), 0);
    await one.selectOption('#widget', name);
    await until('what was about the widget', async () => (await count(one)) >= 2 && (await count(one)) < 20);
  }
  assert.ok((await page.textContent('#details')).includes(name));
  assert.equal(await page.getByRole('switch', {name}).count(), 1);
  assert.equal(await page.locator('script').count(), 1);
  device.type(`delete-widget "${name}"`);
  await close(file);
  await close(page);
});

test('savedFile_isOpenedAgainWithoutASimulator', async () => {
  const live = await openPage(browser, device.url);
  await shown(live, 'identifier=safe');
  const arrows = arrowsOf(await exported(live));
  const path = await saved(live);
  const events = eventsOf(readFileSync(path, 'utf8'));

  const offline = await openPage(browser, `file://${path}`, {offline: true});
  await live.setInputFiles('#file', {name: 'colleague.html', mimeType: 'text/html', buffer: readFileSync(path)});

  for (const page of [offline, live]) {
    await until('all events', async () => (await count(page)) === events.length);
    assert.deepEqual(arrowsOf(await exported(page)), arrows);
    assert.ok(await page.locator('#play').isHidden());
  }
  assert.deepEqual(offline.requested.filter((url) => !/^(data|blob):/.test(url)), [`file://${path}`]);
  await takePicture(offline, 'saved');
  assert.deepEqual(await violations(offline), []);
  await close(offline);
  await close(live);
});

test('twoPages_seeTheSameAndObeyBoth', async () => {
  const [one, other] = [await openPage(browser, device.url), await openPage(browser, device.url)];

  await turn(one, 'Internet', false);
  await until('the other page', async () => (await isOn(other, 'Internet')) === 'false');
  await turn(other, 'Internet', true);
  await until('the first page', async () => (await isOn(one, 'Internet')) === 'true');
  await say(one, 'note "the last word"');
  await Promise.all([one, other].map((page) => shown(page, 'the last word')));

  assert.equal(await count(one), await count(other));
  assert.deepEqual(arrowsOf(await exported(one)), arrowsOf(await exported(other)));
  await close(one);
  await close(other);
});

test('filters_leaveOutWhatIsNotWanted', async () => {
  const page = await openPage(browser, device.url);
  await shown(page, 'identifier=safe');
  const all = await count(page);

  await page.getByRole('checkbox', {name: 'Device services'}).uncheck();
  const withoutDevice = await until('fewer events', async () => (await count(page)) < all && count(page));
  const arrows = arrowsOf(await exported(page));
  await page.getByRole('checkbox', {name: 'Device services'}).check();
  await page.selectOption('#widget', 'safe');
  const ofSafe = await until('fewer still', async () => (await count(page)) < withoutDevice && count(page));
  await page.selectOption('#widget', '');

  assert.ok(arrows.length > 0 && !arrows.some((arrow) => /vorlet\.daemon|widget\.manager/.test(arrow)));
  assert.ok(ofSafe >= 5);
  await until('all events', async () => (await count(page)) === all);
  await close(page);
});

test('pause_holdsThePictureAndLosesNothing', async () => {
  const page = await openPage(browser, device.url);
  await shown(page, 'identifier=safe');
  const before = await count(page);

  await page.getByRole('button', {name: 'Pause'}).click();
  await say(page, 'note "during the pause"');
  await page.getByText('paused: 1 new').waitFor();
  const during = await count(page);
  await page.getByRole('button', {name: 'Pause'}).click();

  await shown(page, 'during the pause');
  assert.equal(during, before);
  await until('one more', async () => (await count(page)) === before + 1);
  await close(page);
});

test('pausesToScale_areAsLongAsTheyWere', async () => {
  const page = await openPage(browser, device.url);
  await shown(page, '503');
  const height = () => page.locator('#extent').evaluate((extent) => extent.getBoundingClientRect().height);
  const folded = await height();

  await page.selectOption('#scale', 'to scale');

  const path = await downloaded(page, () => page.click('#export'));
  const svg = readFileSync(path, 'utf8');
  const picture = await openPage(browser, `file://${path}`);
  assert.equal(await picture.locator('g.event').count(), await count(page));
  assert.ok(!svg.includes('var('), 'a colour that only the page knows');
  await close(picture);
  const [, pixels, words] = /height="([\d.]+)"\/>\s*<text[^>]*>([^<]*) until the next try/.exec(svg);
  await until('a longer picture', async () => (await height()) > folded + 150);
  assert.match(words, /^5\.\d s$/);
  assert.ok(Math.abs(Number(pixels) - Number.parseFloat(words) * 40) < 12, `${pixels} px for ${words}`);
  await close(page);
});

test('keyboardAlone_isEnough', async () => {
  const page = await openPage(browser, device.url);
  await shown(page, 'identifier=safe');
  const active = () => page.evaluate(() => document.activeElement.id || document.activeElement.ariaLabel);
  const tabTo = async (id) => {
    for (let i = 0; i < 80 && (await active()) !== id; ++i) {
      await page.keyboard.press('Tab');
    }
    assert.equal(await active(), id);
  };

  await tabTo('chart');
  await page.keyboard.press('End');
  const last = await page.getAttribute('#chart', 'aria-activedescendant');
  await page.keyboard.press('ArrowUp');
  await until('the one before', async () => {
    const now = await page.getAttribute('#chart', 'aria-activedescendant');
    return now && now !== last;
  });
  await page.keyboard.press('Enter');
  assert.equal(await active(), 'details');
  await page.keyboard.press('Escape');
  assert.equal(await active(), 'chart');
  await page.keyboard.press('Enter');
  assert.equal(await active(), 'details');
  await page.keyboard.press('Escape');
  await tabTo('Internet');
  await page.keyboard.press('Space');
  await until('no internet', async () => (await isOn(page, 'Internet')) === 'false');
  assert.equal(await active(), 'Internet');
  await page.keyboard.press('Space');
  await until('internet', async () => (await isOn(page, 'Internet')) === 'true');
  device.type('add-app "first one" A face', 'add-app "second one" B face');
  await page.getByText('second one: B, face').waitFor();
  const [first, second] = await page.locator('#applications button').evaluateAll((buttons) =>
    buttons.slice(-2).map((button) => button.ariaLabel));
  await tabTo(second);
  device.type(first.replace('Remove', 'remove-app'));
  await page.getByText('first one: A, face').waitFor({state: 'detached'});
  assert.equal(await active(), second);
  await page.keyboard.press('Enter');
  await page.getByText('second one: B, face').waitFor({state: 'detached'});
  assert.equal(await active(), 'Widget of a new application');
  await tabTo('line');
  await page.keyboard.type('help');
  await page.keyboard.press('Enter');
  await page.getByText('a widget asks the daemon to register it').waitFor();
  await page.keyboard.type('set-key unseen-key');
  await page.keyboard.press('Enter');
  await page.getByText('> set-key ***').waitFor();
  await page.keyboard.press('ArrowUp');

  assert.equal(await page.inputValue('#line'), 'help');
  assert.ok(!(await page.content()).includes('unseen-key'));
  await close(page);
});

for (const colorScheme of ['light', 'dark']) {
  test(`rulesOfAccessibility_areKept_${colorScheme}`, async () => {
    const page = await openPage(browser, device.url, {colorScheme});
    await shown(page, 'identifier=safe');
    await page.focus('#chart');
    await page.keyboard.press('End');
    await say(page, 'nonsense');
    await page.getByText('no such command').waitFor();
    await page.getByRole('button', {name: 'Pause'}).click();
    await page.getByText(/paused: \d+ new/).waitFor();

    assert.deepEqual(await violations(page), []);
    await close(page);
  });
}

test('narrowScreen_needsNoScrollingSideways', async () => {
  const page = await openPage(browser, device.url, {viewport: {width: 360, height: 740}, colorScheme: 'dark'});
  await shown(page, 'identifier=safe');

  const width = await page.evaluate(() => document.documentElement.scrollWidth);
  const cutOff = await page.evaluate(() => [...document.querySelectorAll('body *:not(svg *)')]
    .filter((one) => one.getBoundingClientRect().right > 360.5).map((one) => one.outerHTML.slice(0, 100)));

  await takePicture(page, 'phone');
  assert.equal(width, 360);
  assert.deepEqual(cutOff, []);
  assert.deepEqual(await violations(page), []);
  await close(page);
});

// Seconds of processor time that the page has taken so far. Its frames come late on a busy machine, this does not.
async function processorTime(page) {
  page.debugger ??= await page.context().newCDPSession(page);
  await page.debugger.send('Performance.enable', {timeDomain: 'threadTicks'});
  const {metrics} = await page.debugger.send('Performance.getMetrics');
  return metrics.find(({name}) => name === 'TaskDuration').value;
}

test('thousandEventsASecond_leaveThePageTimeAndAreAllThere', async () => {
  const seconds = 4;
  const page = await openPage(browser, device.url);
  await shown(page, 'identifier=safe');
  const start = await count(page);
  const before = await processorTime(page);

  const begin = Date.now();
  let sent = 0;
  const timer = setInterval(() => {
    const due = Math.min(1000 * seconds, Date.now() - begin);
    device.type(...Array.from({length: due - sent}, (unused, i) => `note flood-${sent + i}`));
    sent = due;
  }, 25);
  await until('the last of the flood', () => sent === 1000 * seconds);
  clearInterval(timer);
  await until('all events', async () => (await count(page)) === start + sent);

  const busy = (await processorTime(page)) - before;
  const elements = await page.evaluate(() => document.querySelectorAll('*').length);
  const file = eventsOf(readFileSync(await saved(page), 'utf8'));
  assert.ok(busy > 0 && busy < seconds / 2, `${busy} s of processor time in ${seconds} s`);
  assert.ok(elements < 1000, `${elements} elements`);
  assert.equal(file.filter((event) => event.title.startsWith('flood-')).length, sent);
  console.log(`processor time of the page at 1,000 events a second: ${(100 * busy / seconds).toFixed(0)} %; ` +
    `${elements} elements`);
  await close(page);
});

test('pressAndRelease_areAClickWhileEventsCome', async () => {
  const page = await openPage(browser, device.url);
  await shown(page, 'identifier=safe');
  let sent = 0;
  const timer = setInterval(() => device.type('heal', `fail ${++sent} 503`, `note passing-${sent}`), 10);
  const pass = async (events) => {
    const end = (await count(page)) + events;
    await until(`${events} more events`, async () => (await count(page)) > end);
  };
  const clickSlowly = async (target) => {
    const {x, y, width, height} = await page.locator(target).boundingBox();
    await page.mouse.move(x + width / 2, y + height / 2);
    await page.mouse.down();
    await pass(20);
    await page.mouse.up();
  };

  await clickSlowly('#switches [aria-label=Internet]');
  await until('no internet', async () => (await isOn(page, 'Internet')) === 'false');
  // Nothing but the notes is seen now.
  await pass(60);
  await clickSlowly('#chart');
  await page.locator('#details').waitFor();
  clearInterval(timer);
  device.type('heal');
  await turn(page, 'Internet', true);

  assert.match(await page.textContent('#details h2'), /^passing-\d+$/);
  await close(page);
});

test('viewScrolledBack_staysWhenTheOldestEventsGo', async () => {
  const page = await openChart(browser, device.url);
  const place = () => page.locator('#event-a-50000').evaluate((node) => Math.round(node.getBoundingClientRect().top));
  await page.evaluate(() => addNotes(99000));
  await until('the last event', async () => (await page.locator('#event-a-99000').count()) === 1);
  await page.evaluate(() => {
    chart.view.scrollTop = 34 * 49995 + 7;
  });
  await page.locator('#event-a-50000').waitFor();
  const before = await place();

  await page.evaluate(() => addNotes(1001));
  await page.getByText('90001 events, 10000 older ones').waitFor();

  assert.equal(await place(), before);
  await close(page);
});

test('exportedChart_isXmlWhateverItSays', async () => {
  const page = await openPage(browser, device.url);
  const titles = ['\u0000\u0001\u001f', '\ufffe\uffff', 'half \ud83d', '\ude00 half', 'whole \u{1f600}', '<&>"\'\t', ']]>'];
  const list = titles.flatMap((title, i) => [
    {n: 2 * i + 1, t: 1, kind: 'note', from: '', to: '', title},
    {n: 2 * i + 2, t: 1, kind: 'call', from: 'widgets', to: 'qwixtd', title}]);

  await page.setInputFiles('#file', {name: 'odd.html', mimeType: 'text/html',
    buffer: Buffer.from(`<script type="application/json" id="trace">${JSON.stringify(list).replaceAll('<', '\\u003c')}</script>`)});
  await page.getByText('odd.html: 14 events').waitFor();
  const picture = await openPage(browser, `file://${await downloaded(page, () => page.click('#export'))}`);

  assert.equal(await picture.locator('parsererror').count(), 0);
  assert.equal(await picture.locator('g.event').count(), list.length);
  assert.ok((await picture.locator('svg').textContent()).includes('whole \u{1f600}'));
  await close(picture);
  await close(page);
});

test('manyWidgets_areOfferedUpToABound', async () => {
  const page = await openPage(browser, device.url);
  const open = async (name, count) => {
    const list = Array.from({length: count}, (unused, i) =>
      ({n: i + 1, t: 1, kind: 'note', from: 'server', to: 'server', title: 'a', widget: `w${i}`}));
    await page.setInputFiles('#file', {name, mimeType: 'text/html',
      buffer: Buffer.from(`<script type="application/json" id="trace">${JSON.stringify(list)}</script>`)});
    await page.getByText(`${name}: ${count} events`).waitFor();
  };
  const offered = () => page.locator('#widget option').evaluateAll((options) => options.map((option) => option.value));

  await open('many.html', 3000);
  const many = await offered();
  await page.selectOption('#widget', 'w7');
  await open('few.html', 2);

  assert.equal(many.length, 501);
  assert.deepEqual((await offered()).sort(), ['', 'w0', 'w1', 'w7']);
  await close(page);
});

test('fileThatIsNoTrace_isRefusedAndChangesNothing', async () => {
  const page = await openPage(browser, device.url);
  await shown(page, 'identifier=safe');
  const open = (name, json) => page.setInputFiles('#file', {name, mimeType: 'text/html',
    buffer: Buffer.from(`<script type="application/json" id="trace">${json}</script>`)});

  for (const [name, json, reason] of [
    ['torn.html', '[{"n":1', ''],
    ['empty.html', 'null', ': it holds no list of events'],
    ['strange.html', '[{"n":1,"t":1,"kind":"note","from":"x","to":"x","title":"a"}]',
      ': entry 1 of its list is in a lane that does not exist'],
  ]) {
    await open(name, json);
    await page.getByText(`${name} is no saved trace${reason}`, {exact: true}).waitFor();
  }
  device.type('note still-live');

  await shown(page, 'still-live');
  assert.ok(await page.locator('#play').isVisible());
  await close(page);
});

test('savedTraceOfManyEvents_isSeenWholeAndExportedUpToABound', async () => {
  const page = await openPage(browser, device.url);
  const list = Array.from({length: 101000}, (unused, i) =>
    ({n: i + 1, t: i, kind: 'note', from: 'server', to: 'server', title: `note ${i + 1}`}));

  await page.setInputFiles('#file', {name: 'long.html', mimeType: 'text/html',
    buffer: Buffer.from(`<script type="application/json" id="trace">${JSON.stringify(list)}</script>`)});

  await until('all events', async () => (await page.textContent('#count')) === '101000 events');
  const svg = await exported(page);

  assert.ok(svg.includes('The newest 10000 rows of 101000; a filter leaves fewer.'));
  assert.deepEqual([...svg.matchAll(/id="event-saved-(\d+)"/g)].map(([, n]) => Number(n)),
    list.slice(-10000).map(({n}) => n));
  await close(page);
});

test('pauseThatOutlastsTheEvents_countsWhatIsThere', async () => {
  const page = await openChart(browser, device.url);
  const says = (text) => until(text, async () => (await page.textContent('#count')) === text);

  await page.evaluate(() => {
    addNotes(1000);
    chart.setPaused(true);
    addNotes(98000);
  });
  await says('1000 events, paused: 98000 new');
  await page.evaluate(() => addNotes(1001));
  await says('0 events, paused: 90001 new, 10000 older ones in the saved trace only');
  await page.evaluate(() => chart.setPaused(false));

  await says('90001 events, 10000 older ones in the saved trace only');
  await close(page);
});

test('pageOfAnotherOrigin_cannotDriveTheDevice', async () => {
  const other = createServer((request, response) => response.setHeader('Content-Type', 'text/html').end('<p>other'));
  await new Promise((resolve) => {
    other.listen(0, '127.0.0.1', resolve);
  });
  const context = await browser.newContext();
  const page = await context.newPage();
  await page.goto(`http://127.0.0.1:${other.address().port}/`);

  const results = await page.evaluate(async (url) => {
    const tries = [
      () => fetch(`${url}commands`, {method: 'POST', body: 'note taken-over', mode: 'no-cors'}),
      () => fetch(`${url}events`),
      () => new Promise((resolve, reject) => {
        const form = Object.assign(document.createElement('form'), {method: 'post', action: `${url}commands`, enctype: 'text/plain', target: 'frame'});
        const frame = Object.assign(document.createElement('iframe'), {name: 'frame', onload: resolve, onerror: reject});
        document.body.append(frame, form);
        form.submit();
      }),
    ];
    return Promise.all(tries.map((attempt) => attempt().then((answer) => answer?.type ?? 'loaded', () => 'failed')));
  }, device.url);
  device.type('note that-is-all');
  await device.seen(/note +that-is-all/);

  assert.deepEqual(results, ['failed', 'failed', 'load']);
  assert.ok(!device.output.includes('taken-over'));
  await context.close();
  other.close();
});

test('simulatorStartedAgain_isFollowedByThePage', async () => {
  const ownDevice = new Device();
  await ownDevice.start();
  const page = await openPage(browser, ownDevice.url);
  page.mayLoseConnection = true;
  await shown(page, 'remoteId');
  const firstTrace = ownDevice.output;

  await ownDevice.stopSimulator();
  await page.getByText('no connection').waitFor();
  await page.click('#save');
  await page.getByText('no connection: the trace cannot be saved, but exported as SVG').waitFor();
  assert.deepEqual(await violations(page), []);
  assert.ok((await exported(page)).includes('remoteId'));
  await ownDevice.startSimulator(ownDevice.port);
  await page.getByText('connected', {exact: true}).waitFor();
  await shown(page, 'The simulator was started again');
  ownDevice.type('create-widget afterwards');
  await shown(page, 'afterwards');

  assert.deepEqual(arrowsOf(await exported(page)).sort(),
    [...expectedArrows(firstTrace), ...expectedArrows(ownDevice.output)].sort());
  await close(page);
  await ownDevice.stop();
});

test('storyOnACrowdedDevice_beginsWithNothingAndMayBeStopped', async () => {
  const ownDevice = new Device();
  await ownDevice.start();
  const page = await openPage(browser, ownDevice.url);
  ownDevice.type(...Array.from({length: 105}, (unused, i) => `create-widget w${i}`));
  await page.locator('#widgets').getByText('100 of 105').waitFor();
  const steps = () => [...ownDevice.output.matchAll(/note +1\. The device boots/g)].length;

  await page.click('#play');
  await until('the first step', () => steps() === 1);
  assert.equal([...ownDevice.output.matchAll(/says widgetDeleted\(/g)].length, 105);
  await page.click('#play');
  await page.getByText('The story was stopped.').waitFor();
  assert.equal(await page.locator('.story .bad').count(), 0);
  await page.click('#play');
  await until('the first step again', () => steps() === 2);
  await page.setInputFiles('#file', {name: 'other.html', mimeType: 'text/html',
    buffer: Buffer.from('<script type="application/json" id="trace">[]</script>')});
  await page.getByText('other.html: 0 events').waitFor();

  assert.ok(await page.locator('#story').isHidden());
  await close(page);
  await ownDevice.stop();
});

test('storyThroughTheButton_comesTrueAndItsArrowsAreThoseOfTheTrace', async () => {
  const page = storysPage;

  await page.getByText('The story came true.').waitFor({timeout: 90000});

  const arrows = arrowsOf(await exported(page)).sort();
  assert.deepEqual(arrows, expectedArrows(storysDevice.output).sort());
  assert.equal(await page.locator('#steps .done').count(), 10);
  await page.locator('#failures').check();
  await until('the 503 and what was sent again', async () => (await count(page)) === 2);
  await page.setViewportSize({width: 1280, height: 960});
  await page.focus('#chart');
  await page.keyboard.press('Home');
  await page.locator('#failures').uncheck();
  await until('all events', async () => (await count(page)) > 2);
  await page.getByRole('option', {name: /status.*failed|503.*failed/, selected: true}).waitFor();
  await takePicture(page, 'story-light');
  await page.emulateMedia({colorScheme: 'dark'});
  await takePicture(page, 'story-dark');
  await close(page);
});
