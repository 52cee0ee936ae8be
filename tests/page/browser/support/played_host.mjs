// A host that is played: it serves the page's own files and says whatever a test wants said, for what
// no controller brings about on demand. Its headers are the host's own.
import { createServer } from 'node:http';
import { once } from 'node:events';
import { readFileSync } from 'node:fs';
import { extname, join } from 'node:path';

import { root } from './machine.mjs';
import { webSocketOf } from './web_socket_server.mjs';

const web = join(root, 'tools/page/web');
const token = '0123456789abcdef0123456789abcdef';
const policy = "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; " +
  "base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
/** @type {Record<string, string>} */
const types = { '.html': 'text/html', '.js': 'text/javascript', '.css': 'text/css', '.svg': 'image/svg+xml' };
const noFaults = {
  timeouts: 0, retries: 0, giveUps: 0, late: 0, exceptions: 0, lostConnections: 0, failedConnects: 0,
};

/** @typedef {import('../../../../tools/page/web/app/feed/messages.js').Status} Status */
/** @typedef {import('../../../../tools/page/web/app/feed/messages.js').Variable} Variable */
/** @typedef {import('../../../../tools/page/web/app/feed/messages.js').ValueRow} ValueRow */

/** A status in which all is well. @returns {Status} */
export function wellStatus() {
  const now = Date.now();
  return {
    now, program: 'tavmir-host', version: '9.9', project: 'played.json', epoch: 'one', startedAt: now - 60_000,
    controller: '127.0.0.1:5020',
    link: { state: 'connected', text: 'connected to 127.0.0.1:5020', since: now - 60_000 },
    pass: { ms: 100, elements: 2, requests: 1 }, planGeneration: 1,
    roundTrip: { medianMs: 0.4, p99Ms: 1.5 },
    lastMinute: { ...noFaults }, total: { ...noFaults },
    writes: { allowed: true, only: null, text: 'on' }, recording: null, missed: 0,
    history: { from: now - 60_000, bytes: 1e6, limitBytes: 64e6 }, replay: null,
  };
}

/** @param {number} index @param {string} address @param {Partial<Variable>} [more] @returns {Variable} */
export function variable(index, address, more = {}) {
  return { index, name: address, address, station: 1, type: 'word', format: 'unsigned', elements: 1, writable: true,
    isBit: false, low: null, high: null, ...more };
}

export class PlayedHost {
  status = wellStatus();
  /** @type {Variable[]} */ variables = [variable(0, 'Main.Level'), variable(1, 'Main.Speed')];
  /** @type {ValueRow[]} */ values = [];
  /** @type {import('../../../../tools/page/web/app/feed/messages.js').PageEvent[]} */ events = [];
  /** With which HTTP status, where it is another one than 200. @type {Record<string, number>} */
  statuses = {};

  /** What the interface answers, by the path behind /api/v1/. @type {Record<string, (body: any) => unknown>} */
  answers = {
    history: () => ({ address: 'Main.Level', from: 0, to: 0, oldest: null, source: 'memory', isBit: false,
      t: [], min: [], max: [], last: [], gaps: [], events: [] }),
    frames: () => ({ frames: [], missed: 0 }),
    events: () => ({ events: [], oldest: 0 }),
  };
  /** Headers of answers, by the same path. @type {Record<string, Record<string, string>>} */
  headers = {};
  /** What was posted, in order. @type {{path: string, body: any}[]} */
  posted = [];
  #sequence = 0;
  /** @type {Set<(text: string) => void>} */ #listeners = new Set();
  #server = createServer((request, answer) => this.#answer(request, answer));
  /** @type {NodeJS.Timeout | undefined} */ #timer;

  /** @returns {Promise<string>} the page's URL */
  async start() {
    const readAt = Date.now();
    this.values = this.variables.map(({ index }) => [index, '1500', 1500, 'good', '', readAt, readAt]);
    this.#server.on('upgrade', (request, socket) => {
      const send = webSocketOf(request, socket, () => {
        send(this.#message('snapshot'));
        this.#listeners.add(send);
      });
      socket.on('close', () => this.#listeners.delete(send));
    });
    this.#server.listen(0, '127.0.0.1');
    await once(this.#server, 'listening');
    this.#timer = setInterval(() => this.#tell(), 100);
    return `${this.origin}/#token=${token}`;
  }

  get origin() {
    return `http://127.0.0.1:${/** @type {import('node:net').AddressInfo} */ (this.#server.address()).port}`;
  }

  stop() {
    clearInterval(this.#timer);
    this.#server.closeAllConnections();
    this.#server.close();
  }

  #tell() {
    const now = Date.now();
    this.values.forEach((row) => { if (row[3] === 'good') row[5] = now; });
    this.#sequence += 1;
    const message = this.#message('changes');
    this.#listeners.forEach((send) => send(message));
  }

  /** @param {'snapshot'|'changes'} kind */
  #message(kind) {
    const now = Date.now();
    const status = { ...this.status, now };
    const message = { kind, epoch: 'one', sequence: this.#sequence, now, generation: 1, status,
      values: this.values, events: this.events };
    return JSON.stringify(kind === 'snapshot' ? { ...message, variables: this.variables } : message);
  }

  /**
   * @param {import('node:http').IncomingMessage} request
   * @param {import('node:http').ServerResponse} answer
   */
  async #answer(request, answer) {
    answer.setHeader('Content-Security-Policy', policy).setHeader('X-Content-Type-Options', 'nosniff');
    const { pathname } = new URL(request.url ?? '/', this.origin);
    if (!pathname.startsWith('/api/v1/')) {
      this.#file(pathname, answer);
      return;
    }
    const path = pathname.slice('/api/v1/'.length);
    let body = '';
    for await (const part of request) body += part;
    const taken = body ? JSON.parse(body) : null;
    if (request.method === 'POST') this.posted.push({ path, body: taken });
    answer.setHeader('Content-Type', 'application/json');
    for (const [name, value] of Object.entries(this.headers[path] ?? {})) answer.setHeader(name, value);
    answer.statusCode = this.statuses[path] ?? 200;
    answer.end(JSON.stringify(this.answers[path]?.(taken) ?? {}));
  }

  /** @param {string} path @param {import('node:http').ServerResponse} answer */
  #file(path, answer) {
    const chart = path.startsWith('/vendor/');
    const file = chart ? join(web, 'node_modules/uplot/dist', path.slice('/vendor/'.length))
      : join(web, path === '/' ? 'index.html' : path);
    answer.setHeader('Content-Type', types[extname(file)] ?? 'text/plain');
    answer.end(readFileSync(file));
  }
}
