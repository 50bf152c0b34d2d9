// The browser of the tests, and what every page of it is held to: no error on the console, and no request to anywhere but
// the simulator.
import {mkdirSync} from 'node:fs';
import {createRequire} from 'node:module';
import {dirname, join} from 'node:path';
import {chromium} from 'playwright-core';

const axePath = createRequire(import.meta.url).resolve('axe-core/axe.min.js');
const pictures = process.env.QWIXT_PICTURES;
let downloads = 0;

export async function startBrowser() {
  return chromium.launch({
    executablePath: process.env.CHROMIUM,
    args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
      '--disable-background-networking', '--disable-component-update', '--disable-sync'],
  });
}

/** A page with a profile of its own; `complaints` gathers what must not happen in it. `prepare` gets it before it loads. */
export async function openPage(browser, url, options = {}, prepare = undefined) {
  const context = await browser.newContext({viewport: {width: 1280, height: 800}, acceptDownloads: true, ...options});
  const page = await context.newPage();
  page.setDefaultTimeout(20000);
  page.complaints = [];
  page.requested = [];
  page.mayLoseConnection = false;
  page.on('pageerror', (error) => page.complaints.push(`error: ${error.message}`));
  page.on('console', (message) => {
    const isLoss = page.mayLoseConnection && message.text().includes('net::ERR_');
    if (['error', 'warning'].includes(message.type()) && !isLoss) {
      page.complaints.push(`${message.type()}: ${message.text()}`);
    }
  });
  page.on('request', (request) => {
    page.requested.push(request.url());
    const isOurs = request.url().startsWith(url.startsWith('file:') ? url : new URL(url).origin);
    if (!isOurs && !/^(blob|data):/.test(request.url())) {
      page.complaints.push(`request to ${request.url()}`);
    }
  });
  await prepare?.(page);
  await page.goto(url);
  return page;
}

/** A picture of what is seen, in the build directory. */
export async function takePicture(page, name) {
  mkdirSync(pictures, {recursive: true});
  await page.screenshot({path: join(pictures, `${name}.png`)});
}

/** What the rules of accessibility find wrong. */
export async function violations(page) {
  // The page's own policy lets no script in; a debugger is above it.
  await page.evaluate(await (await import('node:fs/promises')).readFile(axePath, 'utf8'));
  const result = await page.evaluate(() => globalThis.axe.run(document));
  return result.violations.map(({id, nodes}) => `${id}: ${nodes.map((node) => node.html).join(' | ')}`);
}

/** Runs what makes the page offer a file, and returns where that file is. */
export async function downloaded(page, act) {
  const [download] = await Promise.all([page.waitForEvent('download'), act()]);
  // Under its own name, by which a browser knows what it is.
  const path = join(dirname(await download.path()), `${++downloads}-${download.suggestedFilename()}`);
  await download.saveAs(path);
  return path;
}
