// What is known of one pinned variable: its live course, asked for once and then caught up every two seconds, with
// the latest values in between as they arrive; and the held window, asked for in full detail.
import { emptySeries, lowerBound, merged, put, seriesOf, trim } from '../feed/buckets.js';
import { AskError, get } from '../link/requests.js';

/**
 * @typedef {import('../feed/messages.js').History} History
 * @typedef {import('../feed/messages.js').ValueRow} ValueRow
 * @typedef {import('../feed/messages.js').PageEvent} PageEvent
 * @typedef {import('../feed/buckets.js').Series} Series
 * @typedef {import('./time_window.js').Span} Span
 */

const POINTS = 1200;
const MARGIN = 0.25;
/** Asked for again each time: what was not yet folded in when the last answer was made. */
const OVERLAP_MS = 1500;

export class LaneMemory {
  /** @type {Series} */
  #live;
  /** What the program itself said, up to here; later points are only the latest of each message. */
  #covered;
  /** @type {Series|null} */
  #held = null;
  /** @type {PageEvent[]} */
  #heldEvents = [];
  #asked = 0;
  #busy = false;
  /** Counts other times: an answer of an earlier one is none of this one. */
  #times = 0;
  /** Why nothing can be shown of the past; empty when it can. */
  problem = '';

  /**
   * @param {string} address
   * @param {number} now
   */
  constructor(address, now) {
    this.address = address;
    this.#live = emptySeries(now);
    this.#covered = now;
  }

  /**
   * Forgets everything: the time is another one now.
   * @param {number} now
   */
  reset(now) {
    this.letGo();
    this.#times += 1;
    this.#live = emptySeries(now);
    this.#covered = now;
  }

  /**
   * Asks for the live window anew.
   * @param {number} span
   * @param {number} now
   */
  async load(span, now) {
    const mine = this.#times;
    const more = await this.#ask(now - span * (1 + MARGIN), now, POINTS);
    if (!more || mine !== this.#times) return;
    this.#covered = more.series.to;
    const before = this.#live;
    this.#live = withNewer(more.series, before);
  }

  /**
   * Asks for what came since the last answer.
   * @param {number} span
   * @param {number} now
   */
  async catchUp(span, now) {
    if (this.#busy) return;
    if (now - this.#covered > span || now < this.#covered) {
      await this.load(span, now);
      return;
    }
    const from = this.#covered - OVERLAP_MS;
    const points = Math.max(4, Math.min(2000, Math.ceil(((now - from) / span) * POINTS)));
    const mine = this.#times;
    const more = await this.#ask(from, now, points);
    if (!more || mine !== this.#times) return;
    this.#live = withNewer(merged(this.#live, more.series), this.#live, more.series.to);
    this.#covered = more.series.to;
  }

  /**
   * @param {number} from
   * @param {number} to
   * @param {number} points
   * @returns {Promise<{series: Series, events: PageEvent[]}|null>}
   */
  async #ask(from, to, points) {
    this.#busy = true;
    try {
      /** @type {History} */
      const history = await get('history', {
        address: this.address, from: Math.floor(from), to: Math.ceil(to), points,
      });
      this.problem = '';
      return { series: seriesOf(history), events: history.events };
    } catch (problem) {
      if (problem instanceof AskError && problem.status !== 0) this.problem = problem.message;
      return null;
    } finally {
      this.#busy = false;
    }
  }

  /**
   * The latest value, as it arrives.
   * @param {ValueRow} row
   * @param {number} now
   */
  take(row, now) {
    const value = row[3] === 'good' ? row[2] : null;
    const at = value === null ? now : Math.min(row[5] ?? now, now);
    put(this.#live, at, value, row[3] === 'good' ? 'no number' : `${row[3]}: ${row[4]}`);
  }

  /**
   * The program is lost: what happens from now on is not known, until it tells.
   * @param {number} now
   */
  lose(now) {
    put(this.#live, now, null, 'the page had lost the program');
  }

  /** Forgets what no window needs. @param {number} from */
  trim(from) {
    trim(this.#live, from);
  }

  /**
   * Asks for a held window, with room at both sides.
   * @param {Span} window
   * @param {number} now
   */
  async hold({ from, to }, now) {
    const room = (to - from) * MARGIN;
    this.#asked += 1;
    const mine = this.#asked;
    const more = await this.#ask(from - room, Math.min(to + room, Math.max(now, to)), 2000);
    if (!more || mine !== this.#asked) return;
    this.#held = more.series;
    this.#heldEvents = more.events;
  }

  letGo() {
    this.#asked += 1;
    this.#held = null;
    this.#heldEvents = [];
  }

  /**
   * What to draw of a window.
   * @param {Span} window
   * @param {boolean} live
   * @returns {Series}
   */
  series({ from, to }, live) {
    const held = this.#held;
    const covers = held !== null && held.from <= from + 1 && held.to >= to - 1;
    return !live && held && (covers || this.#live.from > from) ? held : this.#live;
  }

  get events() {
    return this.#heldEvents;
  }
}

/**
 * A series, and what another one has of the time after it.
 * @param {Series} series
 * @param {Series} newer
 * @param {number} [end] of what is to be kept of the series
 * @returns {Series}
 */
function withNewer(series, newer, end = series.to) {
  const place = lowerBound(newer.t, end);
  const gaps = newer.gaps.filter((gap) => gap[1] > end);
  const first = Math.min(newer.t[place] ?? Infinity, Math.max(gaps[0]?.[0] ?? Infinity, end));
  if (first === Infinity) return series;
  return merged(series, {
    from: first,
    to: newer.to,
    t: newer.t.slice(place),
    min: newer.min.slice(place),
    max: newer.max.slice(place),
    last: newer.last.slice(place),
    gaps: gaps.map(([begin, until, reason]) => [Math.max(begin, end), until, reason]),
  });
}
