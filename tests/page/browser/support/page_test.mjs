// pageTest: a statement about the page, proved on a plant of its own in a browser window of its own.
import assert from 'node:assert/strict';
import { after, test } from 'node:test';

import { browserFile, chromium } from './machine.mjs';
import { Plant } from './plant.mjs';
import { patienceMs } from './program.mjs';
import { PageView } from './page_view.mjs';
import { Watch } from './watch.mjs';

/** @type {Promise<import('playwright-core').Browser> | undefined} */
let browser;
after(async () => { await (await browser)?.close(); });

function theBrowser() {
  // Chromium has no sandbox for root; a name that a foreign server may give this machine.
  const args = ['--no-sandbox', '--host-resolver-rules=MAP rebound.test 127.0.0.1'];
  browser ??= chromium.launch({ executablePath: browserFile(), args });
  return browser;
}

/**
 * @typedef {object} Stage
 * @property {Plant} plant
 * @property {PageView} page the page of the plant, opened with its URL
 * @property {import('playwright-core').BrowserContext} context the browser window
 * @property {Watch} watch
 * @property {(settings: import('./plant.mjs').Settings) => Promise<Plant>} another a further plant
 * @property {(url: string) => Promise<PageView>} tab a further tab of the window, opened with a plant's URL
 */

/**
 * @param {string} statement
 * @param {import('./plant.mjs').Settings & { window?: import('playwright-core').BrowserContextOptions }} settings
 * @param {(stage: Stage) => Promise<void>} body
 */
export function pageTest(statement, settings, body) {
  test(statement, async () => {
    const { window: windowOptions, ...plantSettings } = settings;
    /** @type {Plant[]} */
    const plants = [];
    const watch = new Watch();
    const context = await (await theBrowser()).newContext({
      viewport: { width: 1280, height: 720 }, acceptDownloads: true, locale: 'en-GB', ...windowOptions,
    });
    context.setDefaultTimeout(patienceMs);
    await watch.over(context);

    const another = async (/** @type {import('./plant.mjs').Settings} */ its) => {
      const plant = await Plant.start(its);
      plants.push(plant);
      watch.allow(plant.origin);
      return plant;
    };
    const tab = async (/** @type {string} */ url) => {
      const page = new PageView(await context.newPage());
      await page.tab.goto(url);
      return page;
    };
    try {
      const plant = await another(plantSettings);
      const page = await tab(plant.url);
      await page.isLive();
      await body({ plant, page, context, watch, another, tab });
      assert.deepEqual(watch.problems, []);
    } catch (error) {
      const said = plants.map((plant) => `host: ${plant.host?.said.slice(-2000)}`).join('\n');
      console.error(`${statement}\n${watch.problems.join('\n')}\n${said}`);
      throw error;
    } finally {
      await context.close();
      await Promise.all(plants.map((plant) => plant.stop()));
    }
  });
}
