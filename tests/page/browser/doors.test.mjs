// Who is let in: nobody without the token, no page of another place, no name but the host's own.
import assert from 'node:assert/strict';
import { createServer } from 'node:http';
import { once } from 'node:events';
import { after } from 'node:test';

import { pageTest } from './support/page_test.mjs';
import { asked, webSocket } from './support/raw_requests.mjs';

const json = { 'Content-Type': 'application/json' };
const foreign = 'http://elsewhere.test';
const written = JSON.stringify({ address: 'Main.Setpoint', value: '4711' });

/** @type {(() => void)[]} */
const endings = [];
after(() => endings.forEach((end) => end()));

pageTest('a missing or wrong token is answered 401, on every path of the interface', {}, async ({ plant }) => {
  for (const path of ['status', 'variables', 'values', 'plan', 'explain?address=Main.Run', 'events', 'frames',
    'history?address=Main.Run', 'capture.pcapng', 'write', 'anything']) {
    const url = `${plant.origin}/api/v1/${path}`;
    assert.equal((await asked(url)).status, 401, path);
    const wrong = { Authorization: `Bearer ${'0'.repeat(32)}` };
    assert.equal((await asked(url, { headers: wrong })).status, 401, path);
    assert.equal((await asked(`${url}${path.includes('?') ? '&' : '?'}token=${plant.token}`)).status, 401, path);
  }
});

pageTest('a host name that is not its own is answered 421, before all else', {}, async ({ plant }) => {
  const port = new URL(plant.origin).port;
  for (const Host of [`rebound.test:${port}`, 'rebound.test', `127.0.0.1.rebound.test:${port}`, '127.0.0.1:1']) {
    const headers = { Host, Authorization: `Bearer ${plant.token}` };
    for (const path of ['/', '/app/main.js', '/api/v1/status', '/nothing']) {
      assert.equal((await asked(plant.origin + path, { headers })).status, 421, `${Host} ${path}`);
    }
    assert.equal((await asked(`${plant.origin}/api/v1/live`, { headers: webSocket(headers) })).status, 421, Host);
  }
  const own = { Host: `localhost:${port}`, Authorization: `Bearer ${plant.token}` };
  assert.equal((await asked(`${plant.origin}/api/v1/status`, { headers: own })).status, 200);
});

pageTest('a browser that was told another address for a name gets no page and no value', {},
  async ({ plant, context, watch }) => {
    const port = new URL(plant.origin).port;
    const rebound = `http://rebound.test:${port}`;
    watch.allow(rebound);
    watch.expect(/status of 421|Cross-Origin-Opener-Policy header has been ignored/);
    const tab = await context.newPage();
    const answer = await tab.goto(`${rebound}/#token=${plant.token}`);
    assert.equal(answer?.status(), 421);
    const status = await tab.evaluate(async (token) => {
      const reply = await fetch('/api/v1/status', { headers: { Authorization: `Bearer ${token}` } });
      return reply.status;
    }, plant.token);
    assert.equal(status, 421);
  });

pageTest('a foreign Origin is answered 403 on POST and WebSocket, even with the token', { writes: true },
  async ({ plant }) => {
    const before = await plant.read('Main.Setpoint');
    for (const Origin of [foreign, 'null', 'http://127.0.0.1:1', plant.origin.replace('http:', 'https:')]) {
      const headers = { ...json, Origin, Authorization: `Bearer ${plant.token}` };
      const post = { method: 'POST', headers, body: written };
      assert.equal((await asked(`${plant.origin}/api/v1/write`, post)).status, 403, Origin);
      const socket = { headers: webSocket({ Origin }) };
      assert.equal((await asked(`${plant.origin}/api/v1/live`, socket)).status, 403, Origin);
    }
    assert.equal(await plant.read('Main.Setpoint'), before);
    const own = webSocket({ Origin: plant.origin });
    assert.equal((await asked(`${plant.origin}/api/v1/live`, { headers: own })).status, 101);
  });

pageTest('a page of another place that knows the token can neither write nor listen', { writes: true },
  async ({ plant, context, watch }) => {
    const before = await plant.read('Main.Setpoint');
    const other = createServer((_, answer) => answer.end('<!doctype html><title>other</title>')).listen(0, '127.0.0.1');
    endings.push(() => other.close());
    await once(other, 'listening');
    const { port } = /** @type {import('node:net').AddressInfo} */ (other.address());
    watch.allow(`http://127.0.0.1:${port}`);
    watch.expect(/blocked by CORS policy|Failed to load resource|WebSocket connection|ERR_FAILED/);

    const tab = await context.newPage();
    await tab.goto(`http://127.0.0.1:${port}/`);
    const got = await tab.evaluate(async ({ origin, token, body }) => {
      const outcome = (/** @type {Promise<any>} */ promise) => promise.then(() => 'got', () => 'refused');
      const headers = { Authorization: `Bearer ${token}`, 'Content-Type': 'application/json' };
      const plain = { 'Content-Type': 'text/plain' };
      return {
        read: await outcome(fetch(`${origin}/api/v1/status`, { headers })),
        written: await outcome(fetch(`${origin}/api/v1/write`, { method: 'POST', headers, body })),
        // Any browser sends this one, without asking first.
        simple: await outcome(fetch(`${origin}/api/v1/write`,
          { method: 'POST', mode: 'no-cors', headers: plain, body })),
        live: await new Promise((resolve) => {
          const socket = new WebSocket(`${origin.replace('http', 'ws')}/api/v1/live`);
          socket.onopen = () => resolve('got');
          socket.onerror = () => resolve('refused');
        }),
      };
    }, { origin: plant.origin, token: plant.token, body: written });
    assert.deepEqual(got, { read: 'refused', written: 'refused', simple: 'refused', live: 'refused' });
    assert.equal(await plant.read('Main.Setpoint'), before);
  });

pageTest('a page with a wrong token shows nothing and says that it needs the printed URL', {},
  async ({ plant, tab, watch }) => {
    watch.expect(/status of 401/);
    const page = await tab(`${plant.origin}/#token=${'0'.repeat(32)}`);
    await page.isRefused();
    assert.match(await page.part('lost').innerText(), /token|URL/);
    assert.equal(await page.part('value-row').count(), 0);
  });
