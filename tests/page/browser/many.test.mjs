// More than one page: tabs, programs, and clients that do not keep up.
import assert from 'node:assert/strict';
import { after } from 'node:test';

import { pageTest } from './support/page_test.mjs';
import { manyWords, projectFile } from './support/projects.mjs';
import { clientThatStopsReading } from './support/raw_requests.mjs';

/** @type {import('node:net').Socket[]} */
const sockets = [];
after(() => sockets.forEach((socket) => socket.destroy()));

/** The value moves, now. @param {import('./support/page_view.mjs').PageView} page @param {string} address */
async function moves(page, address) {
  const seen = new Set();
  await page.until(address, ({ text, quality }) => quality === 'good' && seen.add(text).size > 5);
}

pageTest('twelve tabs of one browser are live at the same time', {}, async ({ plant, page, tab }) => {
  const tabs = [page];
  while (tabs.length < 12) tabs.push(await tab(plant.url));
  await Promise.all(tabs.map((each) => moves(each, 'Main.Total')));
  assert.equal((await plant.ask('status')).status, 200);
});

pageTest('two programs have their pages in one browser, and each keeps its own token over a reload', {},
  async ({ page, another, tab }) => {
    const project = projectFile('other.json', {
      labels: [{ name: 'Other', variables: [{ name: 'Level', type: 'word', address: 0 }] }],
      polled: [{ address: 'Other.Level' }],
      signals: [{ address: 'Other.Level', signal: 'counter', low: 0, high: 60000, periodMs: 100 }],
    });
    const other = await tab((await another({ project })).url);
    await moves(other, 'Other.Level');
    await moves(page, 'Main.Total');
    await Promise.all([page.tab.reload(), other.tab.reload()]);
    await moves(other, 'Other.Level');
    await moves(page, 'Main.Total');
    assert.match(await page.part('project').innerText(), /plant/);
    assert.match(await other.part('project').innerText(), /other/);
  });

pageTest('clients that stop reading slow nobody else', { project: manyWords(2000, 2000) },
  async ({ plant, page }) => {
    for (let i = 0; i < 3; ++i) sockets.push(await clientThatStopsReading(plant.url));
    // By then more than any buffer between the two has been held back.
    const seen = new Set();
    await page.until('Many.Word[0]', ({ text }) => seen.add(text).size > 60);
    await moves(page, 'Many.Word[0]');
    assert.equal((await plant.json('status')).link.state, 'connected');
  });
