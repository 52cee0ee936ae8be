// A browser window that is watched. One browser for all windows of a process.
import { after } from 'node:test';

import { browserFile, chromium } from './machine.mjs';
import { patienceMs } from './program.mjs';
import { Watch } from './watch.mjs';

/** @type {Promise<import('playwright-core').Browser> | undefined} */
let browser;
after(async () => { await (await browser)?.close(); });

function theBrowser() {
  // Chromium has no sandbox for root; a name that a foreign server may give this machine.
  const args = ['--no-sandbox', '--host-resolver-rules=MAP rebound.test 127.0.0.1'];
  browser ??= chromium.launch({ executablePath: browserFile(), args });
  return browser;
}

/** @param {import('playwright-core').BrowserContextOptions} [options] */
export async function watchedWindow(options = {}) {
  const watch = new Watch();
  const context = await (await theBrowser()).newContext({
    viewport: { width: 1280, height: 720 }, acceptDownloads: true, locale: 'en-GB', ...options,
  });
  context.setDefaultTimeout(patienceMs);
  await watch.over(context);
  return { context, watch };
}
