// What went over the line, newest first, asked for while it is looked at: decoded, with the time to the one before,
// and the bytes of the one that is picked.
import { get } from '../link/requests.js';
import { after, clockTime, length } from '../text/ages.js';
import { counted } from '../text/numbers.js';
import { hexLines } from '../text/hex.js';
import { element, make, setAttribute, setText, show } from '../view/dom.js';
import { VirtualRows } from '../view/virtual_rows.js';

/**
 * @typedef {import('../feed/store.js').Store} Store
 * @typedef {import('../feed/messages.js').Frame} Frame
 *
 * @typedef {object} FrameParts
 * @property {HTMLElement} time
 * @property {HTMLElement} after
 * @property {HTMLElement} way
 * @property {HTMLElement} text
 */

const ROW_HEIGHT = 24;
const EVERY_MS = 500;
const KEPT = 2000;
const AT_ONCE = 200;

/** @type {Record<string, string>} */
const SIGNS = { request: '→', reply: '←', exception: '✕', nothing: '∅' };

/**
 * What stands where frames went by that nobody asked for in time.
 * @param {number} missed how many at least
 * @param {Frame} behind the first that is there again
 * @returns {Frame}
 */
function hole(missed, behind) {
  const why = 'the list was held, out of sight, without the program, or slower than the line';
  return { id: behind.id - 1, at: behind.at, beforeMs: null, way: 'missed', bytes: null, bad: true, elapsedMs: null,
    text: `at least ${counted(missed, 'frame')} went by here: ${why}` };
}

/** @returns {{root: HTMLElement, parts: FrameParts}} */
function createRow() {
  const parts = {
    time: make('span', { class: 'list-time' }),
    after: make('span', { class: 'list-after' }),
    way: make('span', { class: 'list-kind', 'data-test': 'frame-way' }),
    text: make('span', { class: 'list-text', 'data-test': 'frame-text' }),
  };
  const root = make('div', { class: 'list-row frames-columns', role: 'option', 'data-test': 'frame' },
    parts.time, parts.after, parts.way, parts.text);
  return { root, parts };
}

export class FramesView {
  #store;
  /** @type {Frame[]} oldest first */
  #frames = [];
  /** @type {Frame[]} newest first */
  #listed = [];
  #words = '';
  #shown = false;
  #held = false;
  #busy = false;
  /** @type {string|null} */
  #epoch = null;
  /** @type {number|null} */
  #picked = null;
  #problem = '';
  #empty = element('frames-empty', HTMLElement);
  #bytes = element('frame-bytes', HTMLElement);
  #hold = element('frames-hold', HTMLButtonElement);
  /** @type {VirtualRows<FrameParts>} */
  #rows;

  /** @param {Store} store */
  constructor(store) {
    this.#store = store;
    const box = element('frames-rows', HTMLElement);
    this.#rows = new VirtualRows(box, {
      height: ROW_HEIGHT,
      create: createRow,
      fill: (parts, place, root) => this.#fill(parts, place, root),
      key: (place, event) => event.key === 'Enter' && this.#pick(place),
    });
    box.addEventListener('click', (event) => {
      const row = event.target instanceof Element ? event.target.closest('[data-row]') : null;
      if (!(row instanceof HTMLElement)) return;
      this.#rows.focus(Number(row.dataset.row));
      this.#pick(Number(row.dataset.row));
    });
    this.#hold.addEventListener('click', () => this.#toggleHold());
    setInterval(() => this.#ask(), EVERY_MS);
  }

  /** False when there is nothing to give the focus to. */
  focus() {
    return this.#rows.focus(this.#rows.current);
  }

  /** Whether the frames are looked at. @param {boolean} shown */
  show(shown) {
    this.#shown = shown;
    show(this.#hold, shown);
    this.#ask();
  }

  /** @param {string} text */
  filter(text) {
    this.#words = text.toLowerCase();
    this.#list(0);
  }

  #toggleHold() {
    this.#held = !this.#held;
    this.#hold.setAttribute('aria-pressed', String(this.#held));
    this.#ask();
  }

  async #ask() {
    const { status, link, epoch } = this.#store;
    if (!this.#shown || this.#held || this.#busy || link !== 'live' || !status) return;
    if (status.replay) {
      this.#say('A recording has no frames: frames are in captures (--capture FILE).');
      return;
    }
    if (epoch !== this.#epoch) this.#forget(epoch);
    this.#busy = true;
    try {
      const since = this.#frames.length === 0 ? 0 : this.#frames[this.#frames.length - 1].id;
      /** @type {{frames: Frame[], missed: number}} */
      const answer = await get('frames', { since, limit: AT_ONCE });
      this.#problem = '';
      this.#add(answer);
    } catch (problem) {
      this.#problem = problem instanceof Error ? problem.message : String(problem);
      this.#list(0);
    } finally {
      this.#busy = false;
    }
  }

  /** @param {string|null} epoch */
  #forget(epoch) {
    this.#epoch = epoch;
    this.#frames = [];
    this.#picked = null;
    show(this.#bytes, false);
  }

  /** @param {{frames: Frame[], missed: number}} answer */
  #add({ frames, missed }) {
    const newest = this.#frames.length === 0 ? -1 : this.#frames[this.#frames.length - 1].id;
    const fresh = frames.filter((frame) => frame.id > newest);
    if (missed > 0 && fresh.length > 0) this.#frames.push(hole(missed, fresh[0]));
    this.#frames.push(...fresh);
    if (this.#frames.length > KEPT) this.#frames.splice(0, this.#frames.length - KEPT);
    this.#list(newest);
  }

  /** @param {number} seen id of the newest frame that was listed */
  #list(seen) {
    const words = this.#words.split(/\s+/).filter((word) => word !== '');
    this.#listed = this.#frames.filter((frame) => {
      const text = `${frame.way} ${frame.text}`.toLowerCase();
      return words.every((word) => text.includes(word));
    }).reverse();
    const fresh = seen <= 0 ? 0 : this.#listed.findIndex((frame) => frame.id <= seen);
    this.#rows.show(this.#listed.length);
    if (fresh > 0) this.#rows.shift(fresh);
    this.#say(this.#problem || (words.length === 0 ? 'No frames yet.' : 'No frame has these words.'));
  }

  /** @param {string} text */
  #say(text) {
    const nothing = this.#listed.length === 0;
    show(this.#empty, nothing || this.#problem !== '');
    setText(this.#empty, text);
  }

  /**
   * @param {FrameParts} parts
   * @param {number} place
   * @param {HTMLElement} root
   */
  #fill(parts, place, root) {
    const frame = this.#listed[place];
    if (!frame) return;
    const took = frame.elapsedMs === null ? '' : ` (${length(frame.elapsedMs)})`;
    setText(parts.time, clockTime(frame.at, true));
    setText(parts.after, frame.beforeMs === null ? '' : after(frame.beforeMs));
    setText(parts.way, `${SIGNS[frame.way] ?? (frame.bad ? '✕' : '·')} ${frame.way}`);
    setText(parts.text, frame.text + took);
    setAttribute(root, 'title', frame.text);
    setAttribute(root, 'data-way', frame.way);
    setAttribute(root, 'data-bad', String(frame.bad));
    setAttribute(root, 'data-id', String(frame.id));
    setAttribute(root, 'aria-selected', String(frame.id === this.#picked));
  }

  /** @param {number} place */
  #pick(place) {
    const frame = this.#listed[place];
    if (!frame) return false;
    const again = frame.id === this.#picked;
    this.#picked = again ? null : frame.id;
    show(this.#bytes, !again);
    const lines = frame.bytes === null ? 'no bytes' : hexLines(frame.bytes);
    this.#bytes.replaceChildren(make('p', { text: frame.text }), make('pre', { text: lines }));
    this.#rows.fill();
    return true;
  }
}
