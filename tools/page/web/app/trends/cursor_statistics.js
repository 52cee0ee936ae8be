// What lies between two cursors. Gaps do not count: neither into least and greatest nor into the mean.
import { gapAt, lowerBound, valueAt } from '../feed/buckets.js';

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
 * The times between two at which a series may change, both included.
 * @param {Series} series
 * @param {number} from
 * @param {number} to
 */
function turns(series, from, to) {
  const times = [from, to];
  for (let place = lowerBound(series.t, from); place < series.t.length && series.t[place] < to; place += 1) {
    times.push(series.t[place]);
  }
  for (const [begin, end] of series.gaps) {
    if (begin > from && begin < to) times.push(begin);
    if (end > from && end < to) times.push(end);
  }
  return times.sort((one, other) => one - other);
}

/**
 * @param {Series} series
 * @param {number} a
 * @param {number} b
 * @returns {Between}
 */
export function between(series, a, b) {
  const from = Math.min(a, b);
  const to = Math.max(a, b);
  const values = { min: Infinity, max: -Infinity, area: 0, time: 0, rough: false };
  const times = turns(series, from, to);
  times.forEach((at, place) => {
    const held = valueAt(series, at);
    if (held === null) return;
    values.min = Math.min(values.min, held);
    values.max = Math.max(values.max, held);
    const long = (times[place + 1] ?? at) - at;
    values.area += held * long;
    values.time += long;
  });
  addSums(values, series, from, to);
  const first = valueAt(series, from);
  const last = valueAt(series, to);
  const nothing = values.min > values.max;
  return {
    change: first === null || last === null ? null : last - first,
    min: nothing ? null : values.min,
    max: nothing ? null : values.max,
    mean: values.time > 0 ? values.area / values.time : last,
    gapMs: Math.max(0, to - from - values.time),
    rough: values.rough,
  };
}

/**
 * Takes in the least and the greatest of points that stand for several readings each.
 * @param {{min: number, max: number, rough: boolean}} values
 * @param {Series} series
 * @param {number} from
 * @param {number} to
 */
function addSums(values, series, from, to) {
  for (let place = lowerBound(series.t, from); place < series.t.length && series.t[place] <= to; place += 1) {
    if (series.min[place] === series.max[place] || gapAt(series, series.t[place])) continue;
    values.min = Math.min(values.min, series.min[place]);
    values.max = Math.max(values.max, series.max[place]);
    values.rough = true;
  }
}
