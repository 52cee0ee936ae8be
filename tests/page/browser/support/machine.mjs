// Where this machine has what the tests start: the programs as built, the browser, the driver for it.
import { accessSync, constants } from 'node:fs';
import { createRequire } from 'node:module';
import { delimiter, join } from 'node:path';
import { fileURLToPath } from 'node:url';

export const root = fileURLToPath(new URL('../../../../', import.meta.url));
export const build = process.env.TAVMIR_BUILD ?? join(root, 'build/default');

export const controllerFile = join(build, 'tools/controller/tavmir-controller');
export const hostFile = join(build, 'tools/host/tavmir-host');
export const plantFile = join(root, 'examples/plant.json');

const modules = createRequire(join(root, 'tools/page/web/package.json'));

/** @type {typeof import('playwright-core').chromium} */
export const chromium = modules('playwright-core').chromium;

/** @returns {string} Debian's Chromium without windows */
export function browserFile() {
  const name = 'chromium-headless-shell';
  for (const folder of (process.env.PATH ?? '').split(delimiter)) {
    const file = join(folder, name);
    try {
      accessSync(file, constants.X_OK);
      return file;
    } catch {
      // It is in another folder.
    }
  }
  throw new Error(`no ${name} on the path`);
}
