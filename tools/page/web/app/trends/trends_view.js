// The trends: one lane for each pin, one window of time and two cursors for all of them.
import { element, show } from '../view/dom.js';
import { Cursors } from './cursors.js';
import { Lane } from './lane.js';
import { PinnedLanes } from './pinned_lanes.js';
import { TimeWindow } from './time_window.js';
import { saveTrends } from './save_trends.js';
import { trendKeys } from './trend_keys.js';
import { drawTrendState, trendToolbar } from './trend_toolbar.js';

/**
 * @typedef {import('../feed/store.js').Store} Store
 * @typedef {import('../view/colours.js').Colours} Colours
 * @typedef {import('../view/announcer.js').Announcer} Announcer
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
  #lanes;
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
    this.#lanes = new PinnedLanes(store, this.#box, (variable) => this.#lane(variable));
    store.tap((rows, now) => this.#lanes.take(rows, now));
    store.on(['pins', 'variables'], () => this.#pinsChanged());
    store.on(['values', 'link', 'status'], () => this.#lanes.say(store.link === 'live'));
    store.on(['link'], () => this.#linkChanged());
    colours.onChange(() => this.#lanes.lanes.forEach((lane) => lane.redraw()));
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
    this.#lanes.load(span, this.now, () => this.draw());
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
    this.#lanes.letGo();
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
    await this.#lanes.hold(this.window.at(now), now);
    this.draw();
  }

  /** The time jumped: in a recording, or after a long sleep. */
  reload() {
    this.#lanes.forget(this.now);
    this.#lanes.load(this.window.span, this.now, () => this.draw());
  }

  #linkChanged() {
    const at = this.#store.clock.heardAt;
    if (this.#store.link === 'live') this.#catchUp();
    else if (at !== null) this.#lanes.lose(at);
    this.draw();
  }

  #catchUp() {
    if (this.#store.link !== 'live') return;
    const held = this.window.held ? this.window.held.from : Infinity;
    this.#lanes.catchUp(this.window.span, this.now, held);
  }

  #pinsChanged() {
    this.#lanes.follow(this.window.span, this.now, () => this.draw());
    show(element('trends-empty', HTMLElement), this.#lanes.size === 0);
    this.#lanes.arrange(this.#size);
    this.#lanes.say(this.#store.link === 'live');
    this.moved();
  }

  /** @param {import('../feed/messages.js').Variable} variable */
  #lane(variable) {
    return new Lane(variable, this.#colours, this.cursors, {
      hover: (at) => this.#lanes.lanes.forEach((lane) => lane.hover(at)),
      click: (at) => this.#clicked(at),
      drag: (from, to) => {
        this.window.zoomTo(from, to);
        this.moved();
      },
      wheel: (at, event) => this.#wheel(at, event),
      doubleClick: () => this.backToLive(),
    }, () => this.#store.togglePin(variable.address));
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
    this.#lanes.arrange(this.#size);
    this.draw();
  }

  #tick() {
    if (!this.window.live || this.#store.link !== 'live' || this.#lanes.size === 0 || this.#waiting) return;
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
    this.#lanes.draw(window, this.window.live, until);
    const { problem } = this.#lanes;
    drawTrendState(this, window, until, { lost: !live, problem });
  }

  async saveCsv() {
    const { from, to } = this.window.at(this.now);
    const [begin, end] = this.cursors.both ?? [from, to];
    const variables = this.#lanes.lanes.map((lane) => lane.variable);
    await saveTrends(variables, { from: begin, to: end }, this.#announcer);
  }
}
