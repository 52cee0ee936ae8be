// The pinned variables of the trends: a lane and a memory for each, kept up with what arrives.
import { arrange } from './lane_layout.js';
import { LaneMemory } from './lane_memory.js';
import { markedEvents } from './overlays.js';

/**
 * @typedef {import('../feed/store.js').Store} Store
 * @typedef {import('../feed/messages.js').Variable} Variable
 * @typedef {import('./lane.js').Lane} Lane
 * @typedef {{from: number, to: number}} Span
 * @typedef {{lane: Lane, memory: LaneMemory}} Pinned
 */

export class PinnedLanes {
  #store;
  #box;
  #makeLane;
  /** @type {Map<string, Pinned>} */
  #pinned = new Map();

  /**
   * @param {Store} store
   * @param {HTMLElement} box where the lanes stand
   * @param {(variable: Variable) => Lane} makeLane
   */
  constructor(store, box, makeLane) {
    this.#store = store;
    this.#box = box;
    this.#makeLane = makeLane;
  }

  get size() {
    return this.#pinned.size;
  }

  get #all() {
    return [...this.#pinned.values()];
  }

  get lanes() {
    return this.#all.map(({ lane }) => lane);
  }

  /** What is the matter with one of the memories; empty: nothing. */
  get problem() {
    return this.#all.find(({ memory }) => memory.problem !== '')?.memory.problem ?? '';
  }

  /**
   * Those that the store says, in the order of their coming.
   * @param {number} span @param {number} now @param {() => void} loaded
   */
  follow(span, now, loaded) {
    const { pins } = this.#store;
    for (const [address, { lane }] of this.#pinned) {
      const variable = this.#store.variableAt(address);
      if (pins.includes(address) && variable === lane.variable) continue;
      lane.close();
      this.#pinned.delete(address);
    }
    for (const address of pins) this.#add(address, span, now, loaded);
  }

  /** @param {string} address @param {number} span @param {number} now @param {() => void} loaded */
  #add(address, span, now, loaded) {
    const variable = this.#store.variableAt(address);
    if (!variable || this.#pinned.has(address)) return;
    const lane = this.#makeLane(variable);
    const memory = new LaneMemory(address, now);
    memory.load(span, now).then(loaded);
    this.#pinned.set(address, { lane, memory });
    this.#box.append(lane.root);
  }

  /**
   * @param {import('../feed/messages.js').ValueRow[]} rows
   * @param {number} now
   */
  take(rows, now) {
    if (this.#pinned.size === 0) return;
    for (const row of rows) {
      const address = this.#store.variables[row[0]]?.address;
      if (address !== undefined) this.#pinned.get(address)?.memory.take(row, now);
    }
  }

  /** @param {number} span @param {number} now @param {() => void} loaded */
  load(span, now, loaded) {
    for (const { memory } of this.#pinned.values()) memory.load(span, now).then(loaded);
  }

  /** @param {number} now */
  forget(now) {
    for (const { memory } of this.#pinned.values()) memory.reset(now);
  }

  /** @param {number} at when the page heard the program last */
  lose(at) {
    for (const { memory } of this.#pinned.values()) memory.lose(at);
  }

  /** @param {number} span @param {number} now @param {number} held what is older than this may go */
  catchUp(span, now, held) {
    for (const { memory } of this.#pinned.values()) {
      memory.catchUp(span, now);
      memory.trim(Math.min(now - span * 1.5, held));
    }
  }

  /** The details of a window that rests. @param {Span} window @param {number} now */
  async hold(window, now) {
    await Promise.all(this.#all.map(({ memory }) => memory.hold(window, now)));
  }

  letGo() {
    for (const { memory } of this.#pinned.values()) memory.letGo();
  }

  /** @param {{width: number, height: number}} size */
  arrange(size) {
    arrange(this.lanes, size);
  }

  /** @param {Span} window @param {boolean} live the window follows the time @param {number} until */
  draw(window, live, until) {
    for (const { lane, memory } of this.#pinned.values()) {
      const events = markedEvents([...memory.events, ...this.#store.events], lane.address);
      lane.draw(memory.series(window, live), window, until, events);
      lane.measure(window);
    }
  }

  /** The present values. @param {boolean} live */
  say(live) {
    for (const { lane } of this.#pinned.values()) {
      const row = this.#store.values[lane.variable.index];
      if (row) lane.say(row, live);
    }
  }
}
