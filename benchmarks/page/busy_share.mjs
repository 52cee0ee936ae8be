// How busy the page's main thread is while 1,000 variables change ten times a second: headless
// Chromium's own count of the time that its tasks take, over ten seconds, a few times over.
//
// Usage: TAVMIR_BUILD=FOLDER node busy_share.mjs >page.json
import { Plant } from '../../tests/page/browser/support/plant.mjs';
import { PageView } from '../../tests/page/browser/support/page_view.mjs';
import { browserFile, chromium } from '../../tests/page/browser/support/machine.mjs';
import { manyWords } from '../../tests/page/browser/support/projects.mjs';

const variables = 1000;
const seconds = 10;
const rounds = 5;

/** @param {number[]} numbers */
const median = (numbers) => [...numbers].sort((a, b) => a - b)[Math.floor(numbers.length / 2)];

/** @param {import('playwright-core').CDPSession} session */
async function metrics(session) {
  const found = /** @type {Record<string, number>} */ ({});
  for (const { name, value } of (await session.send('Performance.getMetrics')).metrics) found[name] = value;
  return found;
}

/** @param {PageView} page @returns {Promise<{busy: number[], heapMb: number, changesPerSecond: number}>} */
async function measured(page) {
  const session = await page.tab.context().newCDPSession(page.tab);
  await session.send('Performance.enable');
  const busy = [];
  const changed = await page.countChanges('Many.Word[0]');
  const start = await metrics(session);
  let before = start;
  for (let i = 0; i < rounds; ++i) {
    await page.tab.waitForTimeout(seconds * 1000);
    const now = await metrics(session);
    busy.push((now.TaskDuration - before.TaskDuration) / (now.Timestamp - before.Timestamp));
    before = now;
  }
  const changesPerSecond = await changed() / (before.Timestamp - start.Timestamp);
  await session.detach();
  return { busy, heapMb: before.JSHeapUsedSize / 1e6, changesPerSecond };
}

const plant = new Plant({ project: manyWords(variables, variables), host: ['--pass', '50'] });
const browser = await chromium.launch({ executablePath: browserFile(), args: ['--no-sandbox'] });
try {
  await plant.start();
  const tab = await browser.newPage({ viewport: { width: 1280, height: 720 } });
  const page = new PageView(tab);
  await tab.goto(plant.url);
  await page.isLive();
  await page.until('Many.Word[0]', ({ quality }) => quality === 'good');
  await page.filter('');
  const values = await measured(page);
  for (let i = 0; i < 4; ++i) await page.pin(`Many.Word[${i}]`);
  await page.filter('');
  const trends = await measured(page);
  const shown = (/** @type {Awaited<ReturnType<typeof measured>>} */ its) => ({
    busy: median(its.busy), least: Math.min(...its.busy), most: Math.max(...its.busy),
    heapMb: its.heapMb, changesPerSecond: its.changesPerSecond,
  });
  console.log(JSON.stringify({ variables, seconds, rounds, browser: browser.version(),
    values: shown(values), trends: shown(trends) }));
} finally {
  await browser.close();
  await plant.stop();
}
