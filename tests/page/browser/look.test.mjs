// How the page looks: wide and narrow, light and dark.
import assert from 'node:assert/strict';

import { pageTest } from './support/page_test.mjs';

const sizes = [[1280, 720], [1024, 768], [1920, 1080]];

/** Texts in sight that are smaller than 12 px. @param {import('./support/page_view.mjs').PageView} page */
const smallTexts = (page) => page.tab.evaluate(() => {
  const walker = document.createTreeWalker(document.body, 4);
  const small = [];
  for (let text = walker.nextNode(); text; text = walker.nextNode()) {
    const element = text.parentElement;
    if (!element || !text.textContent?.trim() || element.getClientRects().length === 0) continue;
    const size = parseFloat(getComputedStyle(element).fontSize);
    if (size < 12) small.push(`${size} ${text.textContent.trim()}`);
  }
  return small;
});

/** How far the page is wider than the window. @param {import('./support/page_view.mjs').PageView} page */
const tooWide = (page) => page.tab.evaluate(() => document.documentElement.scrollWidth - window.innerWidth);

/**
 * Texts that do not stand out from what is behind them: less than 4.5 to 1, as WCAG 2 counts it.
 * @param {import('./support/page_view.mjs').PageView} page
 */
const faintTexts = (page) => page.tab.evaluate(() => {
  const canvas = new OffscreenCanvas(1, 1);
  const pen = /** @type {OffscreenCanvasRenderingContext2D} */ (canvas.getContext('2d', { willReadFrequently: true }));
  const rgba = (/** @type {string} */ colour) => {
    pen.clearRect(0, 0, 1, 1);
    pen.fillStyle = colour;
    pen.fillRect(0, 0, 1, 1);
    return [...pen.getImageData(0, 0, 1, 1).data];
  };
  const light = (/** @type {number[]} */ colour) => {
    const [r, g, b] = colour.slice(0, 3).map((part) => {
      const share = part / 255;
      return share <= 0.04045 ? share / 12.92 : ((share + 0.055) / 1.055) ** 2.4;
    });
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
  };
  const behind = (/** @type {Element | null} */ element) => {
    for (let at = element; at; at = at.parentElement) {
      const colour = rgba(getComputedStyle(at).backgroundColor);
      if (colour[3] === 255) return colour;
    }
    return [255, 255, 255, 255];
  };
  const faint = [];
  const walker = document.createTreeWalker(document.body, 4);
  for (let text = walker.nextNode(); text; text = walker.nextNode()) {
    const element = text.parentElement;
    if (!element || !text.textContent?.trim() || element.getClientRects().length === 0) continue;
    if (element.closest(':disabled, [aria-disabled="true"]')) continue;
    const [one, two] = [light(rgba(getComputedStyle(element).color)), light(behind(element))];
    const ratio = (Math.max(one, two) + 0.05) / (Math.min(one, two) + 0.05);
    if (ratio < 4.5) faint.push(`${ratio.toFixed(2)} ${element.className} ${text.textContent.trim()}`);
  }
  return [...new Set(faint)];
});

for (const colorScheme of /** @type {('light' | 'dark')[]} */ (['light', 'dark'])) {
  pageTest(`in ${colorScheme} colours every view fits the window, with no text below 12 px and none too faint`,
    { writes: true, controller: ['--refuse', 'Main.Axis[3].Torque=2'], window: { colorScheme } },
    async ({ page }) => {
      await page.until('Main.Axis[3].Torque', ({ quality }) => quality === 'bad');
      await page.filter('');
      await page.pin('Main.Temp');
      await page.pin('Main.Mode.b[5]');
      await page.filter('');
      for (const [width, height] of sizes) {
        await page.tab.setViewportSize({ width, height });
        for (const view of /** @type {const} */ (['events', 'frames', 'plan'])) {
          await page.openView(view);
          assert.deepEqual(await smallTexts(page), [], `${width} ${view}`);
          assert.ok(await tooWide(page) <= 0, `${width} ${view}`);
          assert.deepEqual(await faintTexts(page), [], `${width} ${view}`);
        }
      }
      await page.why('Main.Axis[3].Torque');
      assert.deepEqual(await smallTexts(page), []);
      assert.deepEqual(await faintTexts(page), []);
      assert.ok(await tooWide(page) <= 0);
    });
}

/** Numbers of rows in sight that are not shown to their last digit. @param {import('playwright-core').Page} tab */
const cutNumbers = (tab) => tab.locator('[data-test="value"]').evaluateAll((cells) => (
  cells.filter((cell) => cell.scrollWidth > cell.clientWidth).map((cell) => cell.textContent)));

pageTest('a number is never cut short, nor with its mark, nor is what the strip says',
  { host: ['--stale-after', '500'] }, async ({ plant, page }) => {
    const longest = { 'Main.Recipe[0]': '4294967295', 'Main.Axis[3].Pos': '-2147483648',
      'Main.Axis[3].Vel': '-1.2345679e+38', 'Main.Mode': '0xffff' };
    await plant.controller.stop();
    await plant.startController(['--delay-ms', '0']);
    for (const [address, value] of Object.entries(longest)) await plant.write(address, value);
    for (const quality of ['good', 'stale']) {
      if (quality === 'stale') await plant.controller.stop();
      for (const width of [1280, 1024]) {
        await page.tab.setViewportSize({ width, height: 720 });
        for (const address of Object.keys(longest)) {
          await page.filter(address);
          await page.until(address, (shown) => shown.quality === quality);
          assert.deepEqual(await cutNumbers(page.tab), [], `${width}`);
        }
        const cut = await page.tab.locator('[data-test="strip"] :not(:has(*))').evaluateAll((parts) => (
          parts.filter((part) => part.scrollWidth > part.clientWidth).map((part) => part.textContent)));
        assert.deepEqual(cut, [], `${width}`);
      }
    }
  });

pageTest('at first sight strip, values, trends and events are in a window of 1280 × 720', {}, async ({ page }) => {
  for (const hook of ['strip', 'values', 'trends', 'happened']) {
    const box = await page.part(hook).boundingBox();
    assert.ok(box && box.y >= 0 && box.y + Math.min(box.height, 40) <= 720 && box.height > 20, hook);
  }
});

pageTest('the colours are those of the system until the button says otherwise', { window: { colorScheme: 'dark' } },
  async ({ page }) => {
    const background = () => page.tab.evaluate(() => getComputedStyle(document.body).backgroundColor);
    const dark = await background();
    await page.tab.emulateMedia({ colorScheme: 'light' });
    const light = await background();
    assert.notEqual(dark, light);
    const seen = new Set();
    for (let i = 0; i < 3; ++i) {
      await page.press('theme');
      seen.add(await background());
    }
    assert.deepEqual(seen, new Set([dark, light]));
  });

pageTest('a quality is a word and a sign, not a colour alone', { controller: ['--refuse', 'Main.Setpoint=2'] },
  async ({ page }) => {
    await page.until('Main.Setpoint', ({ quality }) => quality === 'bad');
    const row = await page.row('Main.Setpoint');
    assert.match(await row.innerText(), /bad/);
    assert.match(await row.innerText(), /[^\w\s–.,:()]/);
  });
