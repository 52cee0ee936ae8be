// The watch itself: it notices each thing that no page may do.
import assert from 'node:assert/strict';
import { once } from 'node:events';
import { createServer } from 'node:http';
import { after, test } from 'node:test';

import { patienceMs } from './support/program.mjs';
import { watchedWindow } from './support/window.mjs';

const policy = "default-src 'none'; script-src 'unsafe-inline'; connect-src *";
/** @type {import('node:http').Server[]} */
const servers = [];
after(() => servers.forEach((server) => server.close()));

/** A server of one page. @param {string} body @param {string} [its] content policy @returns {Promise<string>} */
async function serving(body, its = policy) {
  const server = createServer((_, answer) => {
    answer.setHeader('Content-Type', 'text/html').setHeader('Content-Security-Policy', its);
    answer.end(`<!doctype html><title>t</title>${body}`);
  }).listen(0, '127.0.0.1');
  servers.push(server);
  await once(server, 'listening');
  return `http://127.0.0.1:${/** @type {import('node:net').AddressInfo} */ (server.address()).port}`;
}

/**
 * What the watch says of a page.
 * @param {string} body
 * @param {RegExp} problem
 * @param {string} [its] content policy
 */
async function isNoticed(body, problem, its) {
  const { context, watch } = await watchedWindow();
  const place = await serving(body, its);
  watch.allow(place);
  const page = await context.newPage();
  await page.goto(place);
  const until = Date.now() + patienceMs;
  const noticed = () => watch.problems.some((words) => problem.test(words));
  while (!noticed() && Date.now() < until) await page.waitForTimeout(20);
  assert.ok(noticed(), watch.problems.join('\n'));
  await context.close();
}

test('a word on the console that is an error is noticed',
  () => isNoticed('<script>console.error("wrong")</script>', /console: wrong/));

test('what is thrown and not caught is noticed',
  () => isNoticed('<script>throw new Error("thrown")</script>', /not caught: Error: thrown/));

test('a promise that is broken is noticed',
  () => isNoticed('<script>Promise.reject(new Error("broken"))</script>', /not caught: Error: broken/));

test('a script, style or picture that the content policy forbids is noticed', async () => {
  await isNoticed('<script>document.title = "ran"</script>', /content policy: script-src/, "default-src 'none'");
  await isNoticed('<style>b { color: red }</style>', /content policy: style-src/, "default-src 'none'");
  const picture = '<img src="data:image/gif;base64,R0lGODlhAQABAAAAACw=">';
  await isNoticed(picture, /content policy: img-src/, "default-src 'none'");
});

test('a request to another place is noticed', async () => {
  const other = await serving('');
  await isNoticed(`<script>fetch("${other}", { mode: "no-cors" })</script>`, new RegExp(`another place: ${other}`));
});

test('a WebSocket to another place is noticed',
  () => isNoticed('<script>new WebSocket("ws://127.0.0.1:9/live")</script>', /another place: http:\/\/127\.0\.0\.1:9/));

test('what a test brings about on purpose is let pass, nothing else', async () => {
  const { context, watch } = await watchedWindow();
  const place = await serving('<script>console.error("on purpose"); console.error("not")</script>');
  watch.allow(place);
  watch.expect(/on purpose/);
  const page = await context.newPage();
  await page.goto(place);
  while (watch.problems.length === 0) await page.waitForTimeout(20);
  assert.deepEqual(watch.problems, ['console: not']);
  await context.close();
});
