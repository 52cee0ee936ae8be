// Without a pointer.
import assert from 'node:assert/strict';

import { pageTest } from './support/page_test.mjs';

/** @param {import('./support/page_view.mjs').PageView} page @param {string[]} keys */
async function press(page, ...keys) {
  for (const key of keys) await page.tab.keyboard.press(key);
}

/** The filter, by its key, and the row that is left. @param {import('./support/page_view.mjs').PageView} page */
async function goTo(page, address = 'Main.Setpoint') {
  await press(page, '/');
  await page.tab.keyboard.type(address);
  await page.tab.locator(`[data-test="value-row"][data-address="${address}"]`).waitFor();
  await press(page, 'Enter');
}

pageTest('the keyboard alone reaches Why? and leaves it', {}, async ({ page }) => {
  await goTo(page);
  await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
  await press(page, 'Enter');
  const steps = await page.whySteps();
  assert.ok(steps.length > 3);
  await press(page, 'Escape');
  await page.part('why').waitFor({ state: 'hidden' });
});

pageTest('the keyboard alone writes', { writes: true }, async ({ plant, page }) => {
  await goTo(page);
  await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
  await press(page, 'w');
  await page.part('write-new').waitFor();
  await press(page, 'ControlOrMeta+A');
  await page.tab.keyboard.type('4711');
  await press(page, 'Enter');
  await page.writeIs('confirm');
  await press(page, 'Enter');
  assert.equal((await page.writeEnded()).outcome, 'done');
  assert.equal(await plant.read('Main.Setpoint'), '4711');
  await press(page, 'Escape');
  await page.dialogIsClosed();
});

pageTest('Tab reaches everything that can be pressed, and shows where it is', { writes: true }, async ({ page }) => {
  await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
  const reached = new Set();
  for (let i = 0; i < 60; ++i) {
    await press(page, 'Tab');
    const at = await page.tab.evaluate(() => {
      const element = /** @type {HTMLElement | null} */ (document.activeElement);
      if (!element || element === document.body) return null;
      const { outlineStyle, outlineWidth, boxShadow } = getComputedStyle(element);
      const seen = (outlineStyle !== 'none' && parseFloat(outlineWidth) > 0) || boxShadow !== 'none';
      return { hook: element.dataset.test ?? '', name: `${element.tagName} ${element.id} ${element.className}`, seen };
    });
    if (!at) continue;
    assert.ok(at.seen, `nothing shows that ${at.name} has the focus`);
    reached.add(at.hook);
  }
  for (const hook of ['filter', 'pin', 'why-open', 'write-open', 'freeze', 'back-to-live', 'csv', 'tab-events',
    'capture', 'theme', 'help-open']) {
    assert.ok(reached.has(hook), `${hook} of ${[...reached].join()}`);
  }
});

pageTest('a pin, a freeze and the way back to live have their keys', {}, async ({ page }) => {
  await goTo(page, 'Main.Total');
  await press(page, 'p');
  await page.trends.until('Main.Total', ({ points }) => points > 5);
  await press(page, 'z');
  assert.ok(!await page.trends.isStreaming());
  await press(page, 't', 'Home');
  assert.ok(await page.trends.isStreaming());
});
