// A series as the chart takes it: x and y of equal length, a value held until the next one, null where a gap begins,
// so that no line ever crosses a gap.

/** @typedef {import('../feed/buckets.js').Series} Series */

/**
 * @param {Series} series
 * @param {number} until the last value holds until then
 * @returns {[x: number[], y: (number|null)[]]}
 */
export function plotPoints(series, until) {
  /** @type {number[]} */
  const x = [];
  /** @type {(number|null)[]} */
  const y = [];
  const gaps = series.gaps;
  let gap = 0;
  /** @type {number|null} */
  let held = null;

  /** @param {number} at */
  const beginGapsBefore = (at) => {
    while (gap < gaps.length && gaps[gap][0] <= at) {
      if (held !== null) {
        x.push(gaps[gap][0], gaps[gap][0]);
        y.push(held, null);
      }
      held = null;
      gap += 1;
    }
  };

  for (let place = 0; place < series.t.length; place += 1) {
    const at = series.t[place];
    beginGapsBefore(at);
    if (gap > 0 && at < gaps[gap - 1][1]) continue;
    if (series.min[place] !== series.max[place]) {
      x.push(at, at);
      y.push(series.min[place], series.max[place]);
    }
    x.push(at);
    y.push(series.last[place]);
    held = series.last[place];
  }
  beginGapsBefore(until);
  if (held !== null && (x.length === 0 || x[x.length - 1] < until)) {
    x.push(until);
    y.push(held);
  }
  return [x, y];
}
