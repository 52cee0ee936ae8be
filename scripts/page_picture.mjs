// Takes the picture of scripts/make-page-picture. Usage: TAVMIR_BUILD=FOLDER node page_picture.mjs FILE
import { browserFile, chromium } from '../tests/page/browser/support/machine.mjs';
import { PageView } from '../tests/page/browser/support/page_view.mjs';
import { Plant } from '../tests/page/browser/support/plant.mjs';

const file = process.argv[2];
const minuteMs = 60_000;
const pinned = ['Main.Axis[0].Pos', 'Main.Temp', 'Main.Mode.b[5]'];

const plant = new Plant({ controller: ['--refuse', 'Main.Pressure=2'] });
const browser = await chromium.launch({ executablePath: browserFile(), args: ['--no-sandbox'] });
try {
  await plant.start();
  const tab = await browser.newPage({ viewport: { width: 1280, height: 720 }, colorScheme: 'light', locale: 'en-GB' });
  const page = new PageView(tab);
  await tab.goto(plant.url);
  await page.isLive();
  for (const address of pinned) await page.pin(address);
  await page.until('Main.Pressure', ({ quality }) => quality === 'bad');
  await page.filter('');
  await tab.waitForTimeout(minuteMs);
  await tab.screenshot({ path: file });
} finally {
  await browser.close();
  await plant.stop();
}
