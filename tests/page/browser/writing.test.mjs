// Writes from the page: with permission only, confirmed, with what became of them.
import assert from 'node:assert/strict';

import { pageTest } from './support/page_test.mjs';
import { asked } from './support/raw_requests.mjs';

pageTest('without permission there is nothing to write with, and the host refuses', {}, async ({ plant, page }) => {
  await page.stripSays('writes', /off/i);
  assert.match(await page.denied('Main.Setpoint') ?? '', /allow-writes/);
  const answer = await asked(`${plant.origin}/api/v1/write`, {
    method: 'POST', body: JSON.stringify({ address: 'Main.Setpoint', value: '7' }),
    headers: { Authorization: `Bearer ${plant.token}`, 'Content-Type': 'application/json', Origin: plant.origin },
  });
  assert.equal(answer.status, 403);
  assert.match(JSON.parse(answer.body).error, /allow-writes/);
  assert.equal(await plant.read('Main.Setpoint'), '1500');
});

pageTest('with permission for one address only that one can be written', { host: ['--allow-writes=Main.Setpoint'] },
  async ({ plant, page }) => {
    assert.equal(await page.denied('Main.Setpoint'), '');
    assert.notEqual(await page.denied('Main.Operator'), '');
    const answer = await plant.ask('write', {
      method: 'POST', headers: { 'Content-Type': 'application/json' },
      body: JSON.stringify({ address: 'Main.Operator', value: 'Ada' }),
    });
    assert.equal(answer.status, 403);
    assert.equal(await plant.read('Main.Operator'), 'nobody');
  });

pageTest('with permission a write is confirmed with old and new value, done, and read back', { writes: true },
  async ({ plant, page }) => {
    await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
    const dialog = await page.write('Main.Setpoint', '4711');
    assert.match(dialog.asked, /1500/);
    assert.match(dialog.asked, /4711/);
    assert.equal(dialog.outcome, 'done');
    assert.match(await page.part('write-readback').innerText(), /4711/);
    assert.equal(await plant.read('Main.Setpoint'), '4711');
    await page.until('Main.Setpoint', ({ text, quality }) => text === '4711' && quality === 'good');
    await page.press('write-cancel');
    await page.dialogIsClosed();
    await page.openView('events');
    await page.says(/Main\.Setpoint.*4711/);
  });

pageTest('a write that was not confirmed is not sent', { writes: true }, async ({ plant, page }) => {
  await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
  await page.beginWrite('Main.Setpoint', '4711');
  await page.tab.keyboard.press('Escape');
  await page.dialogIsClosed();
  assert.equal(await plant.read('Main.Setpoint'), '1500');
});

pageTest('a value that does not fit is said to be wrong, and nothing is sent', { writes: true },
  async ({ plant, page, watch }) => {
    watch.expect(/status of 400/);
    await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
    const { outcome, text } = await page.write('Main.Setpoint', 'twelve');
    assert.equal(outcome, 'error');
    assert.match(text, /Nothing was written/);
    assert.match(text, /twelve/);
    assert.equal(await plant.read('Main.Setpoint'), '1500');
  });

pageTest('a write that the controller refuses is shown as refused, with its words',
  { writes: true, controller: ['--refuse', 'Main.Operator=2'] }, async ({ page }) => {
    const { outcome, text } = await page.write('Main.Operator', 'Ada');
    assert.equal(outcome, 'refused');
    assert.match(text, /illegal data address/);
  });

pageTest('a write without a connection is shown as not sent, and is not sent later',
  { writes: true, host: ['--timeout', '2000'] }, async ({ plant, page }) => {
    await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
    await plant.controller.stop();
    await page.until('Main.Setpoint', ({ quality }) => quality !== 'good');
    const { outcome } = await page.write('Main.Setpoint', '4711');
    assert.equal(outcome, 'not sent');
    await plant.startController();
    await page.until('Main.Setpoint', ({ text, quality }) => text === '1500' && quality === 'good');
    assert.equal(await plant.read('Main.Setpoint'), '1500');
  });

pageTest('a write that nobody answers is shown as unknown', { writes: true }, async ({ plant, page }) => {
  await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
  await plant.controller.stop();
  await plant.startController(['--fault', 'drop=1']);
  await page.stripSays('link', /connected/i);
  const { outcome } = await page.write('Main.Setpoint', '4711');
  assert.equal(outcome, 'unknown');
});
