// The page's own chart and nothing else: the page of the simulator, in which a script of the tests takes the place of
// the one that puts the page together.
import {openPage} from './browser.mjs';

const main = `
import {Chart} from '/chart.js';
import {Events} from '/events.js';
const events = new Events();
const chart = new Chart(events, () => {});
let number = 0;
events.beginRun('a');
Object.assign(globalThis, {events, chart, addNotes(count) {
  events.add(Array.from({length: count}, () =>
    ({n: ++number, t: number, kind: 'note', from: 'server', to: 'server', title: 'note ' + number})));
}});
document.body.dataset.ready = '';
`;

/** Opens the chart with no events in it; in the page are `events`, `chart` and addNotes(count). */
export async function openChart(browser, url) {
  const page = await openPage(browser, url, {}, (made) =>
    made.route('**/main.js', (route) => route.fulfill({contentType: 'text/javascript', body: main})));
  await page.locator('body[data-ready]').waitFor();
  return page;
}
