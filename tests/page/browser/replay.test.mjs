// A recording in the page: while it is made, across a restart of the program, and played back without a controller.
import assert from 'node:assert/strict';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, test } from 'node:test';

import { NOT_RECORDED } from '../../../tools/page/web/app/feed/buckets.js';
import { hostFile } from './support/machine.mjs';
import { pageTest } from './support/page_test.mjs';
import { PageView } from './support/page_view.mjs';
import { Plant } from './support/plant.mjs';
import { Program } from './support/program.mjs';
import { inTime, waited } from './support/waited.mjs';
import { watchedWindow } from './support/window.mjs';

const moving = 'Main.Axis[0].Pos';
const folder = mkdtempSync(join(tmpdir(), 'tavmir-replay-'));
process.on('exit', () => rmSync(folder, { recursive: true, force: true }));

const restarted = join(folder, 'restarted');
pageTest('a recording stands in the strip, and trends reach back through it behind a restart',
  { host: ['--record', restarted] }, async ({ plant, page, watch }) => {
    watch.expect(/WebSocket connection|ERR_CONNECTION_REFUSED|Failed to load resource/); // while it is away
    await page.stripSays('recording', /KiB|MiB/);
    const changes = async () => (await plant.json(`history?address=${encodeURIComponent(moving)}`)).t.length;
    await waited(changes, (count) => count > 30, 'changes');
    await plant.host.stop();
    await plant.startHost();
    await page.tab.goto(plant.url);
    await page.tab.reload();
    await page.isLive();
    await page.until(moving, ({ quality }) => quality === 'good');
    await page.pin(moving);
    const lane = await page.trends.until(moving, ({ points }) => points > 30);
    const { startedAt } = await plant.json('status');
    const since = (Date.now() - startedAt) / 100; // ten changes a second at most
    assert.ok(lane.points > since || lane.gaps > 0, JSON.stringify(lane));
    const past = await plant.json(`history?address=${encodeURIComponent(moving)}`);
    assert.equal(past.source, 'both');
    assert.ok(past.t.filter((/** @type {number} */ at) => at < startedAt).length > 30);
    assert.ok(past.gaps.some((/** @type {[number, number, string]} */ gap) => gap[2] === NOT_RECORDED));
  });

/** When what was the matter, in milliseconds since 1970. */
const times = { good: 0, stale: 0, back: 0 };
const recorded = join(folder, 'recorded');
/** @type {Program} */ let replay;
let url = '';

/** When the recording says that nothing was answered. @returns {Promise<number[]>} */
async function silence() {
  const { origin, hash } = new URL(url);
  const headers = { Authorization: `Bearer ${hash.slice('#token='.length)}` };
  const ask = async (/** @type {string} */ what) => (await fetch(`${origin}/api/v1/${what}`, { headers })).json();
  const { from, to } = (await ask('status')).replay;
  const { gaps } = await ask(`history?address=${encodeURIComponent(moving)}&from=${from}&to=${to}`);
  return gaps.find((/** @type {[number, number, string]} */ gap) => /answer/.test(gap[2]));
}

before(async () => {
  const plant = new Plant({ host: ['--record', recorded] });
  await plant.start();
  const quality = async () => (await plant.json(`values?address=${encodeURIComponent(moving)}`)).values[0][3];
  await waited(quality, (its) => its === 'good', 'a good value');
  await new Promise((resolve) => { setTimeout(resolve, 4000); }); // for `good` below, on a busy machine too
  plant.controller.signal('SIGSTOP');
  await waited(quality, (its) => its !== 'good', 'a value that is not good');
  await new Promise((resolve) => { setTimeout(resolve, 500); });
  plant.controller.signal('SIGCONT');
  await waited(quality, (its) => its === 'good', 'a good value again');
  await new Promise((resolve) => { setTimeout(resolve, 1000); });
  await plant.stop();
  replay = new Program(hostFile, ['replay', recorded, '--page']);
  url = await replay.line(/^(http:\/\/\S+#token=[0-9a-f]{32})$/);
  const [begin, end] = await silence();
  Object.assign(times, { good: begin - 2500, stale: (begin + end) / 2, back: end + 500 });
});
after(() => replay.stop());

/**
 * @param {string} statement
 * @param {(page: PageView) => Promise<void>} body
 */
function replayTest(statement, body) {
  test(statement, async () => {
    const { context, watch } = await watchedWindow();
    try {
      watch.allow(new URL(url).origin);
      const page = new PageView(await context.newPage());
      await page.tab.goto(url);
      await page.isLive();
      await inTime(body(page));
      assert.deepEqual(watch.problems, []);
    } finally {
      await context.close();
    }
  });
}

/** Moves the slider. @param {PageView} page @param {number} at */
async function goTo(page, at) {
  await page.part('replay-at').evaluate((slider, to) => {
    const its = /** @type {HTMLInputElement} */ (slider);
    its.value = String(to);
    its.dispatchEvent(new window.Event('input', { bubbles: true }));
  }, at);
}

replayTest('the slider brings the values of its time, and says so in the bar', async (page) => {
  await page.part('replay').waitFor();
  await goTo(page, times.stale);
  await page.until(moving, ({ quality }) => quality === 'stale' || quality === 'bad');
  assert.match((await page.value(moving)).reason, /^since /);
  await goTo(page, times.good);
  await page.until(moving, ({ quality }) => quality === 'good');
  await page.stripSays('link', /recording/);
  assert.equal(await page.denied(moving), 'A recording cannot be written.');
});

replayTest('a trend has its gap, and Why? says what was the matter then', async (page) => {
  await goTo(page, times.back);
  await page.until(moving, ({ quality }) => quality === 'good');
  await page.pin(moving);
  await page.trends.until(moving, ({ points, gaps }) => points > 10 && gaps > 0);
  await goTo(page, times.stale);
  await page.until(moving, ({ quality }) => quality !== 'good');
  const steps = await page.why(moving);
  assert.deepEqual(steps.map(({ step }) => step),
    ['resolved', 'polled', 'station', 'exchange', 'value', 'age']);
  assert.match(await page.part('why-conclusion').innerText(), /^At this moment it was (stale|bad) because .*answer/);
});

replayTest('events are those until then, and frames are in captures', async (page) => {
  await page.openView('events');
  await goTo(page, times.stale);
  await page.says(/no reply from/);
  await goTo(page, times.good);
  await page.tab.getByText(/no reply from/).first().waitFor({ state: 'detached' });
  await page.openView('frames');
  await page.says(/captures/);
});

replayTest('played, the time goes on to the end and stops there', async (page) => {
  await goTo(page, times.back);
  await page.until(moving, ({ quality }) => quality === 'good');
  await page.press('replay-play');
  await page.part('replay-play').filter({ hasText: 'Play' }).waitFor();
  const at = () => page.part('replay-at').evaluate((slider) => {
    const { value, max } = /** @type {HTMLInputElement} */ (slider);
    return Number(max) - Number(value);
  });
  await waited(at, (left) => left < 200, 'the end');
});
