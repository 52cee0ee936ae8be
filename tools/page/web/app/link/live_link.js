// The WebSocket to the program: opened again and again when it is lost, resumed where it ended.
//
//   open ─▶ first message: token, epoch, sequence ─▶ snapshot or changes ─▶ changes …
//     ▲                                                      │
//     └── wait (0.25 s … 2 s) ◀── closed, or silent for 3 s ◀─┘
import { token } from './token.js';

export const SILENCE_MS = 3000;
export const LONGEST_PAUSE_MS = 2000;
const FIRST_PAUSE_MS = 250;
const CLOSE_TOKEN = 4401;

/**
 * @typedef {import('../feed/messages.js').Snapshot} Snapshot
 * @typedef {import('../feed/messages.js').Changes} Changes
 *
 * @typedef {object} Listener
 * @property {() => {epoch: string|null, sequence: number}} position what the page has already
 * @property {(message: Snapshot|Changes) => boolean} message false: it does not fit, start from a snapshot
 * @property {() => void} lost
 * @property {() => void} refused the token is not that of the program which answers
 */

export class LiveLink {
  /** @type {WebSocket|null} */
  #socket = null;
  #heard = 0;
  #pause = FIRST_PAUSE_MS;
  #timer = 0;
  #fromStart = false;

  /** @param {Listener} listener */
  constructor(listener) {
    this.#listener = listener;
    setInterval(() => this.#checkSilence(), 250);
  }

  /** @type {Listener} */
  #listener;

  /** Opens the connection now, with the token as it is now. */
  open() {
    this.#drop();
    const scheme = location.protocol === 'https:' ? 'wss:' : 'ws:';
    const socket = new WebSocket(`${scheme}//${location.host}/api/v1/live`);
    this.#socket = socket;
    this.#heard = performance.now();
    socket.onopen = () => this.#greet(socket);
    socket.onmessage = (event) => this.#take(socket, event.data);
    socket.onclose = (event) => this.#closed(socket, event.code);
  }

  /** @param {WebSocket} socket */
  #greet(socket) {
    const { epoch, sequence } = this.#listener.position();
    const known = this.#fromStart ? null : epoch;
    this.#fromStart = false;
    socket.send(JSON.stringify({ token: token(), epoch: known, sequence: known === null ? 0 : sequence }));
  }

  /**
   * @param {WebSocket} socket
   * @param {unknown} data
   */
  #take(socket, data) {
    if (socket !== this.#socket || typeof data !== 'string') return;
    this.#heard = performance.now();
    this.#pause = FIRST_PAUSE_MS;
    if (this.#listener.message(JSON.parse(data))) return;
    this.#fromStart = true;
    this.open();
  }

  /**
   * @param {WebSocket} socket
   * @param {number} code
   */
  #closed(socket, code) {
    if (socket !== this.#socket) return;
    this.#socket = null;
    if (code === CLOSE_TOKEN) this.#listener.refused();
    else this.#listener.lost();
    this.#openLater();
  }

  #openLater() {
    clearTimeout(this.#timer);
    this.#timer = setTimeout(() => this.open(), this.#pause);
    this.#pause = Math.min(this.#pause * 2, LONGEST_PAUSE_MS);
  }

  #checkSilence() {
    if (this.#socket === null || performance.now() - this.#heard < SILENCE_MS) return;
    this.#drop();
    this.#listener.lost();
    this.#openLater();
  }

  #drop() {
    clearTimeout(this.#timer);
    const socket = this.#socket;
    this.#socket = null;
    if (socket) socket.close();
  }
}
