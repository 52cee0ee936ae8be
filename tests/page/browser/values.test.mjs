// The table of values.
import assert from 'node:assert/strict';

import { pageTest } from './support/page_test.mjs';
import { hostileTexts, manyWords, markup, markupName } from './support/projects.mjs';

pageTest('a value that changes in the controller changes on the page', {}, async ({ plant, page }) => {
  await page.until('Main.Setpoint', ({ text, quality }) => text === '1500' && quality === 'good');
  await plant.write('Main.Setpoint', 4711);
  await page.until('Main.Setpoint', ({ text, quality }) => text === '4711' && quality === 'good');
});

pageTest('a moving value goes on moving', {}, async ({ page }) => {
  const seen = new Set();
  await page.until('Main.Total', ({ text }) => seen.add(text).size > 10);
});

pageTest('every polled value is shown as another host reads it', {}, async ({ plant, page }) => {
  const { variables } = await plant.json('variables');
  assert.equal(await page.rowCount(), variables.length);
  for (const address of ['Main.Recipe[1]', 'Main.Axis[0].Torque', 'Main.Operator', 'Line2.Grid[1,C]', 'Main.Run']) {
    await page.until(address, ({ quality }) => quality === 'good');
    assert.equal((await page.value(address)).text, await plant.read(address), address);
  }
});

pageTest('two thousand variables are there, the last one as live as the first',
  { project: manyWords(2000, 2000) }, async ({ plant, page }) => {
    assert.equal((await plant.json('variables')).variables.length, 2000);
    await page.until('Many.Word[0]', ({ quality }) => quality === 'good');
    await page.filter('Word[1999]');
    assert.equal(await page.rowCount(), 1);
    const seen = new Set();
    await page.until('Many.Word[1999]', ({ text }) => seen.add(text).size > 5);
    await page.filter('');
    await page.scrollToLastRow();
    await page.until('Many.Word[1999]', ({ text }) => seen.add(text).size > 10);
  });

pageTest('a text with markup stays text, wherever it comes from', { project: hostileTexts(), writes: true },
  async ({ page }) => {
    const title = await page.tab.title();
    await page.until('Main.Text', ({ text }) => text === markup);
    await page.until(`Main.${markupName}`, ({ text }) => text === '"><svg onload=alert(1)>');
    await page.pressInRow(`Main.${markupName}`, 'pin');
    await page.says(/<u>named<u> is a text/);
    await page.why(`Main.${markupName}`);
    await page.says(/&amp;/);
    await page.press('why-close');
    await page.openView('plan');
    await page.openView('events');
    assert.equal(await page.tab.title(), title);
    assert.equal(await page.tab.locator('img[src=x], body b, body i, body u, svg[onload], body script').count(), 0);
  });
