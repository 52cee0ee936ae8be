// Takes the pictures of scripts/make-page-picture: the page, and its Why? of one variable.
// Usage: TAVMIR_BUILD=FOLDER node page_picture.mjs PAGE_FILE WHY_FILE
import { browserFile, chromium } from '../tests/page/browser/support/machine.mjs';
import { PageView } from '../tests/page/browser/support/page_view.mjs';
import { Plant } from '../tests/page/browser/support/plant.mjs';

const [, , pageFile, whyFile] = process.argv;
const minuteMs = 60_000;
const refused = 'Main.Pressure';
const pinned = ['Main.Axis[0].Pos', 'Main.Temp', 'Main.Mode.b[5]'];

const plant = new Plant({ controller: ['--refuse', `${refused}=2`] });
const browser = await chromium.launch({ executablePath: browserFile(), args: ['--no-sandbox'] });
try {
  await plant.start();
  const tab = await browser.newPage({ viewport: { width: 1280, height: 640 }, colorScheme: 'light', locale: 'en-GB' });
  const page = new PageView(tab);
  await tab.goto(plant.url);
  await page.isLive();
  for (const address of pinned) await page.pin(address);
  await page.until(refused, ({ quality }) => quality === 'bad');
  await page.filter('');
  await tab.waitForTimeout(minuteMs);
  await page.scrollToLastRow();
  await tab.evaluate(() => { /** @type {HTMLElement | null} */ (document.activeElement)?.blur(); });
  await tab.waitForTimeout(1000); // the next picture of the sparklines
  await tab.screenshot({ path: pageFile });
  await page.why(refused);
  await page.part('why').screenshot({ path: whyFile });
} finally {
  await browser.close();
  await plant.stop();
}
