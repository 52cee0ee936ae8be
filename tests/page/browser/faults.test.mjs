// What the page says when something ends: the controller, the program, the way between them.
import assert from 'node:assert/strict';

import { pageTest } from './support/page_test.mjs';

const notGood = (/** @type {string} */ quality) => quality !== 'good';

pageTest('without the controller every value is marked within its limit, and the strip says why',
  { host: ['--stale-after', '1000'] }, async ({ plant, page }) => {
    await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
    const before = await plant.json('status');
    assert.equal(before.link.state, 'connected');
    await plant.controller.stop();
    await page.untilAll(notGood);
    const { text, quality, reason } = await page.value('Main.Setpoint');
    assert.deepEqual([text, quality], ['1500', 'stale']);
    assert.match(reason, /\w/);
    await page.stripSays('link', /lost|refused|closed/i);
    assert.ok((await page.strip('link')).includes(plant.place));

    await plant.startController();
    await page.until('Main.Setpoint', (value) => value.quality === 'good');
    await page.stripSays('link', /connected/i);
    const after = await plant.json('status');
    assert.ok(after.link.since > before.link.since);
  });

pageTest('a controller that is silent is no good link: values go stale, time-outs are counted',
  { host: ['--stale-after', '1000'] }, async ({ plant, page }) => {
    await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
    plant.controller.signal('SIGSTOP');
    await page.untilAll(notGood);
    await page.stripSays('timeouts', /[1-9]/);
    plant.controller.signal('SIGCONT');
    await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
  });

pageTest('one refused address is bad with its reason, and the others stay good',
  { controller: ['--refuse', 'Main.Setpoint=2'] }, async ({ page }) => {
    await page.until('Main.Setpoint', ({ text, quality, reason }) => text === '–' && quality === 'bad' &&
      /illegal data address/.test(reason));
    await page.until('Main.Temp', ({ quality }) => quality === 'good');
  });

pageTest('a controller that refuses everything is connected, but no good link',
  { controller: ['--stations', '9'] }, async ({ plant, page }) => {
    await page.stripSays('link', /only refusals/);
    await page.part('strip-link').locator('xpath=..').and(page.tab.locator('[data-mood="warn"]')).waitFor();
    assert.match((await plant.json('status')).link.text, /^connected to .*, which refuses what it is asked: /);
    await plant.controller.stop();
    await page.stripSays('link', /lost/);
    await plant.startController([]);
    await page.stripSays('link', /connected/);
  });

pageTest('a program that is killed is missed, and a new one is taken with its URL, without a reload', {},
  async ({ plant, page, watch }) => {
    await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
    await page.leaveMark();
    watch.expect(/WebSocket connection|ERR_CONNECTION_REFUSED|Failed to load resource/);
    await plant.host.kill();
    await page.hasLost();
    await page.untilAll((quality) => quality === 'unknown');

    const oldToken = plant.token;
    await plant.startHost();
    assert.notEqual(plant.token, oldToken);
    await page.isRefused();
    assert.match(await page.part('lost').innerText(), /token|URL/);
    await page.tab.goto(plant.url);
    await page.isLive();
    await plant.write('Main.Setpoint', 4711);
    await page.until('Main.Setpoint', ({ text, quality }) => text === '4711' && quality === 'good');
    assert.ok(await page.hasMark(), 'the page was loaded anew');
  });

pageTest('a program that stands still is missed, and the page catches up by itself when it goes on', {},
  async ({ plant, page, watch }) => {
    await page.until('Main.Setpoint', ({ quality }) => quality === 'good');
    await page.leaveMark();
    watch.expect(/WebSocket connection|Failed to load resource/);
    plant.host.signal('SIGSTOP');
    await page.hasLost();
    await page.untilAll((quality) => quality === 'unknown');
    await plant.write('Main.Setpoint', 4711);
    plant.host.signal('SIGCONT');
    await page.isLive();
    await page.until('Main.Setpoint', ({ text, quality }) => text === '4711' && quality === 'good');
    assert.ok(await page.hasMark(), 'the page was loaded anew');
  });
