// The example plant as ./demo --page shows it, of programs that have been built already.
import assert from 'node:assert/strict';
import { join } from 'node:path';
import { test } from 'node:test';

import { build, root } from './support/machine.mjs';
import { PageView } from './support/page_view.mjs';
import { Program } from './support/program.mjs';
import { inTime } from './support/waited.mjs';
import { watchedWindow } from './support/window.mjs';

// What was built is taken as it is.
process.env.TAVMIR_BUILD = build;

test('./demo --page prints the address of a page with live values, and Ctrl-C ends all of it', async () => {
  const demo = new Program(join(root, 'demo'), ['--page']);
  const { context, watch } = await watchedWindow();
  try {
    await inTime((async () => {
      const url = await demo.line(/^(http:\/\/127\.0\.0\.1:[0-9]+\/#token=[0-9a-f]{32})$/);
      watch.allow(new URL(url).origin);
      const page = new PageView(await context.newPage());
      await page.tab.goto(url);
      await page.isLive();
      await page.untilAll((quality) => quality === 'good');
      assert.deepEqual(watch.problems, []);
      await page.tab.close();
      demo.signal('SIGINT');
      assert.equal(await demo.end(), 0, demo.said);
      await assert.rejects(fetch(url), /fetch failed/);
    })());
  } finally {
    await context.close();
    await demo.stop();
  }
});
