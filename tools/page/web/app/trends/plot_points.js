// A series as the chart takes it: x and y of equal length, a value held until the next one, null where a gap begins,
// so that no line ever crosses a gap.

/** @typedef {import('../feed/buckets.js').Series} Series */

/**
 * @param {Series} series
 * @param {number} until the last value holds until then
 * @returns {[x: number[], y: (number|null)[]]}
 */
export function plotPoints(series, until) {
  const { gaps } = series;
  /** @type {number[]} */
  const x = [];
  /** @type {(number|null)[]} */
  const y = [];
  let gap = 0;
  /** The newest value, drawn or not. @type {number|null} */
  let newest = null;
  /** When the gap ends in which we are; null outside of gaps. @type {number|null} */
  let inGapUntil = null;

  /** @param {number} at @param {number|null} value */
  const point = (at, value) => {
    x.push(at);
    y.push(value);
  };

  /**
   * Ends and begins gaps up to a time.
   * @param {number} at
   * @param {boolean} follows a point of that time
   */
  const goTo = (at, follows) => {
    for (;;) {
      const begin = gap < gaps.length ? gaps[gap][0] : Infinity;
      if (inGapUntil !== null && inGapUntil < begin && inGapUntil <= at) {
        if (newest !== null && !(inGapUntil === at && follows)) point(inGapUntil, newest);
        inGapUntil = null;
      }
      if (begin > at) return;
      if (inGapUntil === null && newest !== null) {
        point(begin, newest);
        point(begin, null);
      }
      inGapUntil = Math.max(inGapUntil ?? 0, gaps[gap][1]);
      gap += 1;
    }
  };

  for (let place = 0; place < series.t.length; place += 1) {
    const at = series.t[place];
    goTo(at, true);
    newest = series.last[place];
    if (inGapUntil !== null) continue;
    if (series.min[place] !== series.max[place]) {
      point(at, series.min[place]);
      point(at, series.max[place]);
    }
    point(at, newest);
  }
  goTo(until, false);
  if (inGapUntil === null && newest !== null && x[x.length - 1] < until) point(until, newest);
  return [x, y];
}
