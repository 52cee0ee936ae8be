// The course of one value: points in order of time, each with least, greatest and last value since the one before,
// and the gaps in which the value was not good. A value holds until the next point or gap.

/**
 * @typedef {import('./messages.js').History} History
 *
 * @typedef {[from: number, to: number, reason: string]} Gap `to` is Infinity while it lasts
 *
 * @typedef {object} Series
 * @property {number} from what is known begins here
 * @property {number} to … and ends here
 * @property {number[]} t
 * @property {number[]} min
 * @property {number[]} max
 * @property {number[]} last
 * @property {Gap[]} gaps
 */

/** The reason of a gap that is older than what is kept. */
export const NOTHING_KEPT = 'nothing is kept of this time';
/** The reason of a gap in the recording: the program was away, or could not write. */
export const NOT_RECORDED = 'nothing was recorded at this time';

/**
 * Whether a gap is of what was kept, and not of the value: nobody looked, or nobody remembers.
 * @param {Gap} gap
 */
export function isUnknown([, , reason]) {
  return reason === NOTHING_KEPT || reason === NOT_RECORDED;
}

/**
 * @param {number} at
 * @returns {Series}
 */
export function emptySeries(at) {
  return { from: at, to: at, t: [], min: [], max: [], last: [], gaps: [] };
}

/**
 * What an answer says. A gap that reaches its end lasts: that it is over only a newer answer or reading can say.
 * @param {History} history
 * @returns {Series}
 */
export function seriesOf(history) {
  const { from, to, oldest, t, min, max, last } = history;
  /** @type {Gap[]} */
  const gaps = history.gaps.map(([begin, end, reason]) => [begin, end === null || end >= to ? Infinity : end, reason]);
  const kept = Math.min(oldest ?? to, gaps.length > 0 ? Math.max(gaps[0][0], from) : to);
  if (kept > from && (oldest === null || oldest > from)) gaps.unshift([from, kept, NOTHING_KEPT]);
  return { from, to, t: [...t], min: [...min], max: [...max], last: [...last], gaps };
}

/**
 * The first place in ascending numbers that is not less than the value.
 * @param {number[]} sorted
 * @param {number} value
 */
export function lowerBound(sorted, value) {
  let low = 0;
  let high = sorted.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (sorted[middle] < value) low = middle + 1;
    else high = middle;
  }
  return low;
}

/**
 * The first place in ascending numbers that is greater than the value.
 * @param {number[]} sorted
 * @param {number} value
 */
function upperBound(sorted, value) {
  let place = lowerBound(sorted, value);
  while (place < sorted.length && sorted[place] <= value) place += 1;
  return place;
}

/**
 * Adds one reading, or the begin of a gap.
 * @param {Series} series
 * @param {number} at
 * @param {number|null} value null: not good, for the reason given
 * @param {string} reason
 */
export function put(series, at, value, reason) {
  const open = openGap(series);
  if (value === null) {
    if (open && open[2] === reason) return;
    if (open) open[1] = Math.max(at, open[0]);
    series.gaps.push([Math.max(at, series.to), Infinity, reason]);
    series.to = Math.max(series.to, at);
    return;
  }
  const newest = series.t.length - 1;
  if (newest >= 0 && at < series.t[newest]) return;
  if (open) open[1] = Math.max(at, open[0]);
  series.to = Math.max(series.to, at);
  if (!open && newest >= 0 && series.last[newest] === value && series.min[newest] === series.max[newest]) return;
  const when = open ? open[1] : at;
  series.t.push(when);
  series.min.push(value);
  series.max.push(value);
  series.last.push(value);
}

/**
 * @param {Series} series
 * @returns {Gap|null}
 */
export function openGap(series) {
  const newest = series.gaps[series.gaps.length - 1];
  return newest && newest[1] === Infinity ? newest : null;
}

/**
 * What `more` knows replaces what was known of its time and of all that follows.
 * @param {Series} base
 * @param {Series} more
 * @returns {Series}
 */
export function merged(base, more) {
  const kept = lowerBound(base.t, more.from);
  // The point before its time that an answer brings along is there already, or a newer one is.
  const known = kept > 0 ? upperBound(more.t, Math.min(base.t[kept - 1], more.from)) : 0;
  /** @type {Gap[]} */
  const gaps = [];
  for (const [from, to, reason] of base.gaps) {
    if (from < more.from) gaps.push([from, Math.min(to, more.from), reason]);
  }
  for (const [begin, to, reason] of more.gaps) {
    const from = Math.max(begin, more.from);
    const before = gaps[gaps.length - 1];
    if (before && before[1] === from && before[2] === reason) before[1] = to;
    else gaps.push([from, to, reason]);
  }
  return {
    from: Math.min(base.from, more.from),
    to: Math.max(base.to, more.to),
    t: [...base.t.slice(0, kept), ...more.t.slice(known)],
    min: [...base.min.slice(0, kept), ...more.min.slice(known)],
    max: [...base.max.slice(0, kept), ...more.max.slice(known)],
    last: [...base.last.slice(0, kept), ...more.last.slice(known)],
    gaps,
  };
}

/**
 * Forgets what was before `from`, all but the point whose value still held then.
 * @param {Series} series
 * @param {number} from
 */
export function trim(series, from) {
  if (series.from >= from) return;
  const gone = Math.max(0, lowerBound(series.t, from) - 1);
  for (const list of [series.t, series.min, series.max, series.last]) list.splice(0, gone);
  series.gaps = series.gaps.filter((gap) => gap[1] > from);
  series.from = from;
}

/**
 * The gap at a time, null when there is none.
 * @param {Series} series
 * @param {number} at
 */
export function gapAt(series, at) {
  return series.gaps.find((gap) => at >= gap[0] && at < gap[1]) ?? null;
}

/**
 * The value that held at a time; null in a gap and before the first point. When a gap ends, the newest value before
 * its end holds again: what did not change has no point of its own.
 * @param {Series} series
 * @param {number} at
 * @returns {number|null}
 */
export function valueAt(series, at) {
  if (gapAt(series, at)) return null;
  const place = upperBound(series.t, at) - 1;
  return place < 0 ? null : series.last[place];
}
