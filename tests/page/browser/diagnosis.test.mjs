// Why?, plan, events, frames and the capture: from a first sign to its cause.
import assert from 'node:assert/strict';

import { pageTest } from './support/page_test.mjs';

const order = ['resolved', 'polled', 'station', 'request', 'exchange', 'bytes', 'value', 'age'];

pageTest('Why? goes from the address to the age of a good value', {}, async ({ plant, page }) => {
  await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
  const steps = await page.why('Main.Setpoint');
  assert.deepEqual(steps.map(({ step }) => step), order);
  assert.ok(steps.every(({ ok }) => ok === 'true'), JSON.stringify(steps));
  const said = Object.fromEntries(steps.map(({ step, text }) => [step, text]));
  assert.match(said.resolved, /3016/);
  assert.match(said.request, /\d+ of \d+/);
  assert.match(said.bytes, /05 ?dc/i);
  assert.match(said.value, /1500/);
  assert.match(await page.part('why-conclusion').innerText(), /\w/);
  const { conclusion } = await plant.json('explain?address=Main.Setpoint');
  assert.match(conclusion, /\w/);
});

pageTest('Why? names the refused address as the cause, and what the controller said',
  { controller: ['--refuse', 'Main.Setpoint=2'] }, async ({ page }) => {
    await page.until('Main.Setpoint', ({ quality }) => quality === 'bad');
    const steps = await page.why('Main.Setpoint');
    const failed = steps.filter(({ ok }) => ok === 'false').map(({ step }) => step);
    assert.ok(failed.length > 0);
    assert.match(await page.part('why-conclusion').innerText(), /illegal data address/);
  });

pageTest('Why? says that there is no connection when there is none', {}, async ({ plant, page }) => {
  await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
  await plant.controller.stop();
  await page.until('Main.Setpoint', ({ quality }) => quality === 'stale');
  await page.why('Main.Setpoint');
  assert.match(await page.part('why-conclusion').innerText(), /connect|controller/i);
});

pageTest('the plan lists each request of a pass, why it ends, and what it carries', {}, async ({ plant, page }) => {
  await page.openView('plan');
  const { requests } = await plant.json('plan');
  assert.ok(requests.length > 1);
  await page.part('plan-request').nth(requests.length - 1).waitFor();
  assert.equal(await page.part('plan-request').count(), requests.length);
  const carries = requests.findIndex((/** @type {any} */ { variables }) => variables.includes('Main.Setpoint'));
  const row = page.part('plan-request').nth(carries);
  assert.ok((await row.innerText()).includes(requests[carries].ends));
  await row.locator('summary').click();
  await row.getByText('Main.Setpoint').waitFor();
});

pageTest('the plan goes on without what the controller has come to refuse', {}, async ({ plant, page }) => {
  const carrying = page.part('plan-request').filter({ hasText: 'Main.Setpoint' });
  await page.openView('plan');
  await carrying.first().waitFor();
  await plant.controller.stop();
  await plant.startController(['--refuse', 'Main.Setpoint=2']);
  await carrying.first().waitFor({ state: 'detached' });
  await page.part('plan-request').first().waitFor();
  await plant.controller.stop();
  await plant.startController();
  await carrying.first().waitFor();
});

pageTest('frames are decoded with names, with their bytes on a click', {}, async ({ page }) => {
  await page.openView('frames');
  const frame = page.part('frame').filter({ hasText: 'Main.Setpoint=1500' }).first();
  await frame.waitFor();
  await page.press('frames-hold');
  await page.part('frame').filter({ hasText: 'Main.Setpoint=1500' }).first().click();
  await page.part('frame-bytes').waitFor();
  assert.match(await page.part('frame-bytes').innerText(), /05 ?dc/i);
});

pageTest('what happens to the connection is an event, newest first', {}, async ({ plant, page }) => {
  await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
  await page.openView('events');
  await plant.controller.stop();
  await page.tab.locator('[data-test="event"][data-bad="true"]').first().waitFor();
  await plant.startController();
  await page.tab.locator('[data-test="event"][data-kind="connected"]').nth(1).waitFor();
  const kinds = await page.part('event').evaluateAll((events) => (
    events.map((event) => /** @type {HTMLElement} */ (event).dataset.kind)));
  const back = kinds.indexOf('connected');
  const ended = kinds.findIndex((kind) => kind === 'connectionLost' || kind === 'closed');
  assert.ok(back >= 0 && back < ended, kinds.join());
});

pageTest('a time-out of the controller is counted and told with the variables that it concerns',
  { controller: ['--fault', 'drop%20'] }, async ({ page }) => {
    await page.stripSays('timeouts', /[1-9]/);
    await page.openView('events');
    await page.tab.locator('[data-test="event"][data-kind="timeout"]').first().waitFor();
  });

pageTest('the last minute is saved as a capture', {}, async ({ page, plant }) => {
  await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
  const { name, bytes } = await page.downloaded('capture');
  assert.match(name, /\.pcapng$/);
  assert.equal(bytes.readUInt32BE(0), 0x0a0d0d0a, 'a section header begins a pcapng file');
  assert.ok([0x1a2b3c4d, 0x4d3c2b1a].includes(bytes.readUInt32BE(8)), 'its byte order mark');
  const port = Number(plant.place.split(':')[1]);
  const wanted = Buffer.from([port >> 8, port & 255]);
  assert.ok(bytes.includes(wanted), 'packets name the controller\'s port');
});
