// pageTest: a statement about the page, proved on a plant of its own in a browser window of its own.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { Plant } from './plant.mjs';
import { PageView } from './page_view.mjs';
import { inTime } from './waited.mjs';
import { watchedWindow } from './window.mjs';

/**
 * @typedef {object} Stage
 * @property {Plant} plant
 * @property {PageView} page the page of the plant, opened with its URL
 * @property {import('playwright-core').BrowserContext} context the browser window
 * @property {import('./watch.mjs').Watch} watch what no page may do; the test fails when it was done
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
    const { context, watch } = await watchedWindow(settings.window);
    /** @type {Plant[]} */
    const plants = [];
    const another = async (/** @type {import('./plant.mjs').Settings} */ its) => {
      const plant = new Plant(its);
      plants.push(plant);
      await plant.start();
      watch.allow(plant.origin);
      return plant;
    };
    const tab = async (/** @type {string} */ url) => {
      const page = new PageView(await context.newPage());
      await page.tab.goto(url);
      return page;
    };
    try {
      const plant = await another(settings);
      const page = await tab(plant.url);
      await page.isLive();
      await inTime(body({ plant, page, context, watch, another, tab }));
      assert.deepEqual(watch.problems, []);
    } catch (error) {
      const said = plants.map((plant) => `host: ${plant.said.slice(-2000)}`);
      console.error([statement, ...watch.problems, ...said].join('\n'));
      throw error;
    } finally {
      await context.close();
      await Promise.all(plants.map((plant) => plant.stop()));
    }
  });
}
