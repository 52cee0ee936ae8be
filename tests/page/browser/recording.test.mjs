// A recording, as the page shows it.
import assert from 'node:assert/strict';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

import { pageTest } from './support/page_test.mjs';

const folder = mkdtempSync(join(tmpdir(), 'tavmir-recording-'));
process.on('exit', () => rmSync(folder, { recursive: true, force: true }));
const into = (/** @type {string} */ name) => ['--record', join(folder, name)];

pageTest('a recording stands in the strip, with its size', { host: into('strip') }, async ({ page }) => {
  await page.stripSays('recording', /\d.*(KiB|MiB)/s);
  assert.doesNotMatch(await page.strip('recording'), /off|failed/);
});

pageTest('trends reach back through the recording, behind a start of the program', { host: into('trend') },
  async ({ plant, page, tab }) => {
    const seen = new Set();
    await page.until('Main.Total', ({ text }) => seen.add(text).size > 20);
    await page.tab.close();
    const from = Date.now() - 4000; // before the stop, which may take a busy machine its time
    await plant.host.stop();
    const between = Date.now();
    await plant.startHost();

    const later = await tab(plant.url);
    await later.isLive();
    const past = await plant.json(`history?address=Main.Total&from=${from}&to=${between}&points=100`);
    assert.ok(past.t.filter((/** @type {number} */ at) => at < between).length > 10, JSON.stringify(past));
    assert.match(past.source, /recording|both/);
    await later.pin('Main.Total');
    await later.trends.until('Main.Total', ({ points }) => points > 20);
  });
