// The trends: one lane for each pin, one window of time and two cursors for all of them.
import { element, show } from '../view/dom.js';
import { Cursors } from './cursors.js';
import { Lane } from './lane.js';
import { arrange } from './lane_layout.js';
import { LaneMemory } from './lane_memory.js';
import { markedEvents } from './overlays.js';
import { TimeWindow } from './time_window.js';
import { saveTrends } from './save_trends.js';
import { trendKeys } from './trend_keys.js';
import { drawTrendState, trendToolbar } from './trend_toolbar.js';

/**
 * @typedef {import('../feed/store.js').Store} Store
 * @typedef {import('../view/colours.js').Colours} Colours
 * @typedef {import('../view/announcer.js').Announcer} Announcer
 * @typedef {{lane: Lane, memory: LaneMemory}} Pinned
 */

const CATCH_UP_MS = 2000;
const PICTURE_MS = 100;
const SETTLE_MS = 200;

export class TrendsView {
  window = new TimeWindow();
  cursors = new Cursors();
  #store;
  #colours;
  #announcer;
  #section = element('trends', HTMLElement);
  #box = element('lanes', HTMLElement);
  /** @type {Map<string, Pinned>} */
  #pinned = new Map();
  #size = { width: 0, height: 0 };
  #drawn = 0;
  #settling = 0;
  #waiting = false;

  /**
   * @param {Store} store
   * @param {Colours} colours
   * @param {Announcer} announcer
   */
  constructor(store, colours, announcer) {
    this.#store = store;
    this.#colours = colours;
    this.#announcer = announcer;
    store.tap((rows, now) => this.#take(rows, now));
    store.on(['pins', 'variables'], () => this.#pinsChanged());
    store.on(['values', 'link', 'status'], () => this.#say());
    store.on(['link'], () => this.#linkChanged());
    colours.onChange(() => this.#pinned.forEach(({ lane }) => lane.redraw()));
    setInterval(() => this.#tick(), PICTURE_MS);
    setInterval(() => this.#catchUp(), CATCH_UP_MS);
    new ResizeObserver((entries) => this.#resized(entries[0].contentRect)).observe(this.#box);
    trendToolbar(this);
    this.#section.addEventListener('keydown', (event) => trendKeys(this, event));
  }

  get now() {
    return this.#store.clock.now();
  }

  focus() {
    this.#section.focus();
  }

  /** @param {number} span milliseconds */
  setSpan(span) {
    this.window.setSpan(span);
    for (const { memory } of this.#pinned.values()) memory.load(span, this.now).then(() => this.draw());
    this.moved();
  }

  toggleFreeze() {
    if (!this.window.live) {
      this.backToLive();
      return;
    }
    this.window.freeze(this.now);
    this.#announcer.say('Trends frozen; data go on arriving');
    this.moved();
  }

  backToLive() {
    this.window.backToLive();
    for (const { memory } of this.#pinned.values()) memory.letGo();
    this.#announcer.say('Trends live');
    this.moved();
  }

  /** @param {number} part */
  pan(part) {
    this.window.pan(part, this.now);
    this.moved();
  }

  /** @param {number} factor @param {number} [around] */
  zoom(factor, around) {
    const { from, to } = this.window.at(this.now);
    this.window.zoomBy(factor, around ?? (from + to) / 2, this.now);
    this.moved();
  }

  /** @param {'a'|'b'} name */
  takeCursor(name) {
    const { from, to } = this.window.at(this.now);
    if (this.window.live) this.window.freeze(this.now);
    this.cursors.take(name, from + (to - from) * (name === 'a' ? 1 / 3 : 2 / 3));
    this.moved();
  }

  /** @param {number} part of the window */
  moveCursor(part) {
    const { from, to } = this.window.at(this.now);
    this.cursors.move((to - from) * part);
    this.draw();
  }

  clearCursors() {
    this.cursors.clear();
    this.draw();
  }

  /** The window is another one: draw it, and ask for its details once it rests. */
  moved() {
    this.draw();
    clearTimeout(this.#settling);
    if (this.window.live) return;
    this.#settling = setTimeout(() => this.#hold(), SETTLE_MS);
  }

  async #hold() {
    const { now } = this;
    const window = this.window.at(now);
    await Promise.all([...this.#pinned.values()].map(({ memory }) => memory.hold(window, now)));
    this.draw();
  }

  /**
   * @param {import('../feed/messages.js').ValueRow[]} rows
   * @param {number} now
   */
  #take(rows, now) {
    if (this.#pinned.size === 0) return;
    for (const row of rows) {
      const address = this.#store.variables[row[0]]?.address;
      if (address !== undefined) this.#pinned.get(address)?.memory.take(row, now);
    }
  }

  /** The time jumped: in a recording, or after a long sleep. */
  reload() {
    const { now } = this;
    for (const { memory } of this.#pinned.values()) {
      memory.reset(now);
      memory.load(this.window.span, now).then(() => this.draw());
    }
  }

  #linkChanged() {
    const at = this.#store.clock.heardAt;
    if (this.#store.link === 'live') this.#catchUp();
    else if (at !== null) for (const { memory } of this.#pinned.values()) memory.lose(at);
    this.draw();
  }

  #catchUp() {
    if (this.#store.link !== 'live') return;
    const { now } = this;
    const held = this.window.held ? this.window.held.from : Infinity;
    for (const { memory } of this.#pinned.values()) {
      memory.catchUp(this.window.span, now);
      memory.trim(Math.min(now - this.window.span * 1.5, held));
    }
  }

  #pinsChanged() {
    const { pins } = this.#store;
    for (const [address, { lane }] of this.#pinned) {
      const variable = this.#store.variableAt(address);
      if (pins.includes(address) && variable === lane.variable) continue;
      lane.close();
      this.#pinned.delete(address);
    }
    for (const address of pins) this.#add(address);
    show(element('trends-empty', HTMLElement), this.#pinned.size === 0);
    this.#arrange();
    this.#say();
    this.moved();
  }

  /** @param {string} address */
  #add(address) {
    const variable = this.#store.variableAt(address);
    if (!variable || this.#pinned.has(address)) return;
    const lane = new Lane(variable, this.#colours, this.cursors, {
      hover: (at) => this.#pinned.forEach((each) => each.lane.hover(at)),
      click: (at) => this.#clicked(at),
      drag: (from, to) => {
        this.window.zoomTo(from, to);
        this.moved();
      },
      wheel: (at, event) => this.#wheel(at, event),
      doubleClick: () => this.backToLive(),
    }, () => this.#store.togglePin(address));
    const memory = new LaneMemory(address, this.now);
    memory.load(this.window.span, this.now).then(() => this.draw());
    this.#pinned.set(address, { lane, memory });
    this.#box.append(lane.root);
  }

  /** @param {number} at */
  #clicked(at) {
    this.#section.focus({ preventScroll: true });
    if (this.cursors.active === null) return;
    this.cursors.put(at);
    this.draw();
  }

  /** @param {number} at @param {WheelEvent} event */
  #wheel(at, event) {
    const turn = Math.sign(event.deltaY || event.deltaX);
    if (event.shiftKey || event.deltaY === 0) this.pan(turn * 0.1);
    else this.zoom(turn > 0 ? 1.25 : 0.8, at);
  }

  /** @param {{width: number, height: number}} size */
  #resized({ width, height }) {
    this.#size = { width: Math.floor(width), height: Math.floor(height) };
    this.#arrange();
    this.draw();
  }

  #arrange() {
    arrange([...this.#pinned.values()].map(({ lane }) => lane), this.#size);
  }

  #tick() {
    if (!this.window.live || this.#store.link !== 'live' || this.#pinned.size === 0 || this.#waiting) return;
    const pixel = this.window.span / Math.max(100, this.#size.width);
    if (performance.now() - this.#drawn < Math.min(1000, pixel) - PICTURE_MS / 2) return;
    this.#waiting = true;
    requestAnimationFrame(() => {
      this.#waiting = false;
      this.draw();
    });
  }

  /** Draws every lane as it is now. */
  draw() {
    this.#drawn = performance.now();
    const live = this.#store.link === 'live';
    const until = live ? this.now : this.#store.clock.heardAt ?? this.now;
    const window = this.window.at(until);
    for (const { lane, memory } of this.#pinned.values()) {
      const events = markedEvents([...memory.events, ...this.#store.events], lane.address);
      lane.draw(memory.series(window, this.window.live), window, until, events);
      lane.measure(window);
    }
    const problem = [...this.#pinned.values()].find(({ memory }) => memory.problem !== '')?.memory.problem ?? '';
    drawTrendState(this, window, until, { lost: !live, problem });
  }

  #say() {
    const live = this.#store.link === 'live';
    for (const { lane } of this.#pinned.values()) {
      const row = this.#store.values[lane.variable.index];
      if (row) lane.say(row, live);
    }
  }

  async saveCsv() {
    const { from, to } = this.window.at(this.now);
    const [begin, end] = this.cursors.both ?? [from, to];
    const variables = [...this.#pinned.values()].map(({ lane }) => lane.variable);
    await saveTrends(variables, { from: begin, to: end }, this.#announcer);
  }
}
