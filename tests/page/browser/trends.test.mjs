// The trends of pinned values, while data go on arriving.
import assert from 'node:assert/strict';

import { pageTest } from './support/page_test.mjs';

const length = (/** @type {import('./support/trends_view.mjs').Lane} */ lane) => lane.to - lane.from;

pageTest('a pinned value has a lane that goes on with time', {}, async ({ page }) => {
  await page.pin('Main.Temp');
  const before = await page.trends.until('Main.Temp', ({ points }) => points > 10);
  assert.ok(await page.trends.isStreaming());
  await page.trends.until('Main.Temp', ({ to, points }) => to > before.to + 1000 && points > before.points);
});

pageTest('a frozen window stands still while data go on arriving, and live shows what came meanwhile', {},
  async ({ page }) => {
    await page.pin('Main.Total');
    await page.trends.until('Main.Total', ({ points }) => points > 10);
    await page.press('freeze');
    assert.ok(!await page.trends.isStreaming());
    const frozen = await page.trends.now('Main.Total');
    const seen = new Set();
    await page.until('Main.Total', ({ text }) => seen.add(text).size > 10);
    const later = await page.trends.now('Main.Total');
    assert.deepEqual([later.from, later.to], [frozen.from, frozen.to]);

    await page.press('back-to-live');
    assert.ok(await page.trends.isStreaming());
    // What came meanwhile is drawn, without a gap where it was frozen.
    await page.trends.until('Main.Total', ({ to, points, gaps }) => (
      to > frozen.to + 500 && points > frozen.points && gaps <= frozen.gaps));
  });

pageTest('a part drawn over with the pointer fills the window while data stream, and live goes back', {},
  async ({ page }) => {
    await page.pin('Main.Total');
    await page.pin('Main.Temp');
    await page.trends.until('Main.Total', ({ points }) => points > 20);
    const before = await page.trends.now('Main.Total');
    await page.trends.drag('Main.Total', 0.6, 0.9);
    const zoomed = await page.trends.until('Main.Total', (lane) => length(lane) < 0.5 * length(before));
    assert.ok(!await page.trends.isStreaming());
    const other = await page.trends.now('Main.Temp');
    assert.deepEqual([other.from, other.to], [zoomed.from, zoomed.to], 'lanes share one window');
    const seen = new Set();
    await page.until('Main.Temp', ({ text }) => seen.add(text).size > 5);
    assert.equal((await page.trends.now('Main.Total')).to, zoomed.to);

    await page.press('back-to-live');
    await page.trends.until('Main.Total', ({ to }) => to > zoomed.to + 500);
  });

pageTest('a window that was panned back comes back to the newest', {}, async ({ page }) => {
  await page.pin('Main.Total');
  await page.trends.until('Main.Total', ({ points }) => points > 10);
  const before = await page.trends.now('Main.Total');
  await page.press('pan-back');
  await page.trends.until('Main.Total', ({ to }) => to < before.to);
  assert.ok(!await page.trends.isStreaming());
  await page.press('back-to-live');
  await page.trends.until('Main.Total', ({ to }) => to > before.to);
});

pageTest('a bit has a lane of its own kind, with an edge for each change', {}, async ({ page }) => {
  await page.pin('Main.Mode.b[5]');
  await page.pin('Main.Temp');
  assert.equal((await page.trends.now('Main.Mode.b[5]')).isBit, true);
  assert.equal((await page.trends.now('Main.Temp')).isBit, false);
  await page.trends.until('Main.Mode.b[5]', ({ points }) => points > 4);
});

pageTest('a time without the controller is a gap in the lane', { host: ['--stale-after', '500'] },
  async ({ plant, page }) => {
    await page.pin('Main.Total');
    const before = await page.trends.until('Main.Total', ({ points }) => points > 5);
    await plant.controller.stop();
    await page.until('Main.Total', ({ quality }) => quality === 'stale');
    await plant.startController();
    await page.until('Main.Total', ({ quality }) => quality === 'good');
    await page.trends.until('Main.Total', ({ gaps }) => gaps > before.gaps);
  });

pageTest('a page that is opened later shows what was before it, from the memory of the program', {},
  async ({ plant, page, tab }) => {
    const seen = new Set();
    await page.until('Main.Total', ({ text }) => seen.add(text).size > 20);
    const opened = Date.now();
    const later = await tab(plant.url);
    await later.isLive();
    await later.pin('Main.Total');
    await later.trends.until('Main.Total', ({ points }) => points > 10);
    const { t } = await plant.json(`history?address=Main.Total&from=${opened - 60_000}&to=${opened}&points=100`);
    assert.ok(t.length > 10 && t[0] < opened - 500);
  });

pageTest('two cursors tell time and value between them, least, most and mean', {}, async ({ page }) => {
  await page.pin('Main.Total');
  await page.part('span').selectOption('10000');
  await page.trends.until('Main.Total', ({ points }) => points > 40);
  await page.press('freeze');
  await page.press('cursor-a');
  await page.trends.click('Main.Total', 0.8);
  await page.press('cursor-b');
  await page.trends.click('Main.Total', 0.95);
  const { stats } = await page.trends.until('Main.Total', (lane) => lane.stats !== '');
  assert.match(await page.part('trend-state').innerText(), /Δt 1\.\d+ s/);
  // It counts up, by 60 a second.
  const [, change, least, most, mean] = /Δv (\d+) · min (\d+) · max (\d+) · mean ([\d.]+)/.exec(stats) ?? [];
  assert.ok(Math.abs(Number(change) - 90) < 60, stats);
  assert.equal(Number(most) - Number(least), Number(change));
  assert.ok(Number(mean) > Number(least) && Number(mean) < Number(most));
  await page.press('cursors-off');
  await page.trends.until('Main.Total', (lane) => lane.stats === '');
});

pageTest('the window is saved as CSV, which says what was not good', {}, async ({ page }) => {
  await page.pin('Main.Total');
  await page.pin('Main.Temp');
  await page.trends.until('Main.Total', ({ points }) => points > 20);
  await page.press('freeze');
  const saved = await page.downloaded('csv');
  assert.match(saved.name, /\.csv$/);
  const [heading, ...lines] = saved.bytes.toString().trim().split(/\r?\n/);
  assert.equal(heading, 'time,address,name,min,max,last,state');
  const rows = lines.map((line) => line.split(','));
  assert.ok(rows.every((row) => row.length === 7 && /^\d{4}-\d\d-\d\dT[\d:.]+Z$/.test(row[0])), lines[0]);
  for (const [address, name] of [['Main.Total', 'Main.Total'], ['Main.Temp', 'Temperature']]) {
    const its = rows.filter((row) => row[1] === address && row[2] === name);
    assert.ok(its.filter(([, , , least, , , state]) => state === 'good' && least !== '').length > 10, address);
    assert.ok(its.filter(([, , , , , , state]) => state !== 'good').every(([, , , least]) => least === ''), address);
  }
});
