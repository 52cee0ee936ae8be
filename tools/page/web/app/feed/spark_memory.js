// The last minute of every number, second by second: least and greatest value of each. A value holds until the next
// one arrives; while it is not good there is nothing.

import { lowerBound, valueAt } from './buckets.js';

/** @typedef {import('./buckets.js').Series} Series */

export const SECONDS = 60;

export class SparkMemory {
  #min = new Float64Array(0);
  #max = new Float64Array(0);
  #held = new Float64Array(0);
  #head = new Int32Array(0);
  /** Whether the time before the page came is there too. */
  #known = new Uint8Array(0);
  #start = 0;

  /**
   * Forgets everything and makes room.
   * @param {number} count variables
   * @param {number} now
   */
  reset(count, now) {
    this.#min = new Float64Array(count * SECONDS).fill(NaN);
    this.#max = new Float64Array(count * SECONDS).fill(NaN);
    this.#held = new Float64Array(count).fill(NaN);
    this.#head = new Int32Array(count).fill(SECONDS);
    this.#known = new Uint8Array(count);
    this.#start = now - SECONDS * 1000;
  }

  /** @param {number} now */
  #second(now) {
    return Math.max(0, Math.floor((now - this.#start) / 1000));
  }

  /**
   * @param {number} index
   * @param {number} value NaN: not good
   * @param {number} now
   */
  put(index, value, now) {
    this.#advance(index, this.#second(now));
    this.#held[index] = value;
    if (Number.isNaN(value)) return;
    const at = index * SECONDS + (this.#head[index] % SECONDS);
    if (!(this.#min[at] <= value)) this.#min[at] = value;
    if (!(this.#max[at] >= value)) this.#max[at] = value;
  }

  /** Nothing is known from now on: the program is lost. */
  lose() {
    this.#held.fill(NaN);
  }

  /**
   * @param {number} index
   * @param {number} second
   */
  #advance(index, second) {
    const from = Math.max(this.#head[index], second - SECONDS);
    for (let next = from + 1; next <= second; next += 1) {
      const at = index * SECONDS + (next % SECONDS);
      this.#min[at] = this.#held[index];
      this.#max[at] = this.#held[index];
    }
    if (second > this.#head[index]) this.#head[index] = second;
  }

  /**
   * Whether the seconds before the first reading are still to be asked for.
   * @param {number} index
   */
  lacksPast(index) {
    return this.#known[index] === 0;
  }

  /**
   * There is nothing to fill in: the minute is seen from now on.
   * @param {number} index
   */
  noPast(index) {
    if (index < this.#known.length) this.#known[index] = 1;
  }

  /**
   * Fills in what was before the page came, once; seconds that are there stay.
   * @param {number} index
   * @param {Series} series
   */
  fillPast(index, series) {
    if (index >= this.#known.length) return;
    this.#known[index] = 1;
    const head = this.#head[index];
    for (let second = Math.max(0, head - SECONDS + 1); second <= head; second += 1) {
      const at = index * SECONDS + (second % SECONDS);
      if (!Number.isNaN(this.#min[at])) continue;
      const from = this.#start + second * 1000;
      const [min, max] = extent(series, from, from + 1000);
      this.#min[at] = min;
      this.#max[at] = max;
    }
  }

  /**
   * Calls back for each second, oldest first, place 0 … 59; NaN where there is nothing.
   * @param {number} index
   * @param {number} now
   * @param {(place: number, min: number, max: number) => void} each
   */
  read(index, now, each) {
    this.#advance(index, this.#second(now));
    const head = this.#head[index];
    for (let place = 0; place < SECONDS; place += 1) {
      const second = head - SECONDS + 1 + place;
      const at = index * SECONDS + (((second % SECONDS) + SECONDS) % SECONDS);
      each(place, this.#min[at], this.#max[at]);
    }
  }
}

/**
 * Least and greatest value of a series within a time; NaN where there is none.
 * @param {Series} series
 * @param {number} from
 * @param {number} to
 * @returns {[number, number]}
 */
function extent(series, from, to) {
  if (to <= series.from || from > series.to) return [NaN, NaN];
  const held = valueAt(series, from);
  let min = held ?? Infinity;
  let max = held ?? -Infinity;
  for (let place = lowerBound(series.t, from); place < series.t.length && series.t[place] < to; place += 1) {
    min = Math.min(min, series.min[place]);
    max = Math.max(max, series.max[place]);
  }
  return min > max ? [NaN, NaN] : [min, max];
}
