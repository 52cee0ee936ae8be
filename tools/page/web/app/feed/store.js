// The state of the page. The live link puts messages in, views read and are told, once for each picture,
// which topics changed. Taps are told of every row as it arrives, also while the tab is hidden.
import { Clock } from './clock.js';

/**
 * @typedef {import('./messages.js').Snapshot} Snapshot
 * @typedef {import('./messages.js').Changes} Changes
 * @typedef {import('./messages.js').Status} Status
 * @typedef {import('./messages.js').Variable} Variable
 * @typedef {import('./messages.js').ValueRow} ValueRow
 * @typedef {import('./messages.js').PageEvent} PageEvent
 *
 * @typedef {'link'|'status'|'variables'|'values'|'events'|'pins'} Topic
 * @typedef {'connecting'|'live'|'lost'|'refused'} LinkState how the page and the program stand
 * @typedef {(rows: ValueRow[], now: number) => void} Tap
 */

export const KEPT_EVENTS = 2000;
export const MOST_PINS = 16;

export class Store {
  /** @type {LinkState} */
  link = 'connecting';
  /** @type {Status|null} */
  status = null;
  /** @type {Variable[]} */
  variables = [];
  /** @type {ValueRow[]} one for each variable, at its index */
  values = [];
  /** @type {PageEvent[]} oldest first */
  events = [];
  /** @type {string[]} addresses of the pinned variables */
  pins = [];
  /** @type {string|null} */
  epoch = null;
  sequence = 0;
  generation = -1;
  clock = new Clock();

  /** @type {Map<Topic, (() => void)[]>} */
  #listeners = new Map();
  /** @type {Tap[]} */
  #taps = [];
  /** @type {Set<Topic>} */
  #changed = new Set();
  /** @type {(draw: () => void) => void} */
  #nextPicture;

  /** @param {(draw: () => void) => void} nextPicture calls back before the next picture is drawn */
  constructor(nextPicture) {
    this.#nextPicture = nextPicture;
  }

  /**
   * @param {Topic[]} topics
   * @param {() => void} listener called once for each picture in which any of them changed
   */
  on(topics, listener) {
    for (const topic of topics) this.#listeners.set(topic, [...(this.#listeners.get(topic) ?? []), listener]);
  }

  /** @param {Tap} tap */
  tap(tap) {
    this.#taps.push(tap);
  }

  /** @param {Topic[]} topics */
  touch(...topics) {
    const asleep = this.#changed.size === 0;
    for (const topic of topics) this.#changed.add(topic);
    if (asleep) this.#nextPicture(() => this.#tell());
  }

  #tell() {
    const called = new Set();
    for (const topic of this.#changed) {
      for (const listener of this.#listeners.get(topic) ?? []) called.add(listener);
    }
    this.#changed.clear();
    for (const listener of called) listener();
  }

  /**
   * Takes a message; false when it does not continue what is here, so that a snapshot is needed.
   * @param {Snapshot|Changes} message
   */
  take(message) {
    if (message.kind === 'snapshot') this.#begin(message);
    else if (message.epoch !== this.epoch || message.generation !== this.generation) return false;
    this.epoch = message.epoch;
    this.sequence = message.sequence;
    this.status = message.status;
    this.clock.set(message.now, message.status.replay);
    this.#takeRows(message.values);
    this.#takeEvents(message.events);
    this.setLink('live');
    this.touch('status');
    return true;
  }

  /** @param {Snapshot} message */
  #begin(message) {
    this.generation = message.generation;
    this.variables = message.variables;
    this.values = message.variables.map((_, index) => [index, '–', null, 'never', 'no reply yet', null, null]);
    if (message.epoch !== this.epoch || message.status.replay) this.events = [];
    this.touch('variables');
  }

  /** @param {ValueRow[]} rows */
  #takeRows(rows) {
    if (rows.length === 0) return;
    for (const row of rows) {
      if (row[0] < this.values.length) this.values[row[0]] = row;
    }
    const now = this.clock.now();
    for (const tap of this.#taps) tap(rows, now);
    this.touch('values');
  }

  /** @param {PageEvent[]} events */
  #takeEvents(events) {
    const newest = this.events.length === 0 ? -1 : this.events[this.events.length - 1].id;
    const fresh = events.filter((event) => event.id > newest);
    if (fresh.length === 0) return;
    this.events.push(...fresh);
    if (this.events.length > KEPT_EVENTS) this.events.splice(0, this.events.length - KEPT_EVENTS);
    this.touch('events');
  }

  /** @param {LinkState} state */
  setLink(state) {
    if (this.link === state) return;
    this.link = state;
    this.touch('link', 'status', 'values');
  }

  /** @param {string} address */
  isPinned(address) {
    return this.pins.includes(address);
  }

  /**
   * Pins a variable, or takes its pin away; false when there is no room for one more.
   * @param {string} address
   */
  togglePin(address) {
    if (this.isPinned(address)) this.setPins(this.pins.filter((pin) => pin !== address));
    else if (this.pins.length < MOST_PINS) this.setPins([...this.pins, address]);
    else return false;
    return true;
  }

  /** @param {string[]} addresses */
  setPins(addresses) {
    this.pins = addresses;
    this.touch('pins', 'values');
  }

  /**
   * @param {string} address
   * @returns {Variable|null}
   */
  variableAt(address) {
    return this.variables.find((variable) => variable.address === address) ?? null;
  }
}
