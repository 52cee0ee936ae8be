// What lies between two cursors. Gaps do not count: neither into least and greatest nor into the mean.
import { lowerBound, valueAt } from '../feed/buckets.js';

/**
 * @typedef {import('../feed/buckets.js').Series} Series
 *
 * @typedef {object} Between
 * @property {number|null} change value at the later cursor less that at the earlier one; null when one is in a gap
 * @property {number|null} min
 * @property {number|null} max
 * @property {number|null} mean over time: each value counts as long as it held
 * @property {number} gapMs how much of the time the value was not good
 * @property {boolean} rough the mean is one of sums over several readings each
 */

/**
 * @param {Series} series
 * @param {number} a
 * @param {number} b
 * @returns {Between}
 */
export function between(series, a, b) {
  const from = Math.min(a, b);
  const to = Math.max(a, b);
  const first = valueAt(series, from);
  const last = valueAt(series, to);
  const sum = { min: Infinity, max: -Infinity, area: 0, time: 0, rough: false };
  let place = lowerBound(series.t, from);
  let since = from;
  let held = first;
  for (; place < series.t.length && series.t[place] <= to; place += 1) {
    add(sum, series, held, since, series.t[place]);
    since = series.t[place];
    held = valueAt(series, since) === null ? null : series.last[place];
    if (held === null) continue;
    sum.min = Math.min(sum.min, series.min[place]);
    sum.max = Math.max(sum.max, series.max[place]);
    if (series.min[place] !== series.max[place]) sum.rough = true;
  }
  add(sum, series, held, since, to);
  const nothing = sum.min > sum.max;
  return {
    change: first === null || last === null ? null : last - first,
    min: nothing ? null : sum.min,
    max: nothing ? null : sum.max,
    mean: sum.time > 0 ? sum.area / sum.time : last,
    gapMs: Math.max(0, to - from - sum.time),
    rough: sum.rough,
  };
}

/**
 * @param {{min: number, max: number, area: number, time: number}} sum
 * @param {Series} series
 * @param {number|null} held
 * @param {number} from
 * @param {number} to
 */
function add(sum, series, held, from, to) {
  if (held === null) return;
  const gap = series.gaps.find((each) => each[0] >= from && each[0] < to && each[1] > each[0]);
  const end = gap ? gap[0] : to;
  sum.area += held * (end - from);
  sum.time += end - from;
  sum.min = Math.min(sum.min, held);
  sum.max = Math.max(sum.max, held);
}
