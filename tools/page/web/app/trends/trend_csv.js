// The course of pinned variables as rows: one for each time at which a value changed, was lost or came back, and one
// for the begin of the span. Where readings were summed up, least and greatest differ from the last.
import { gapAt, lowerBound, merged, seriesOf, valueAt } from '../feed/buckets.js';
import { get } from '../link/requests.js';
import { csv } from '../text/csv.js';

/**
 * @typedef {import('../feed/messages.js').History} History
 * @typedef {import('../feed/messages.js').Variable} Variable
 * @typedef {import('../feed/buckets.js').Series} Series
 * @typedef {import('./time_window.js').Span} Span
 * @typedef {(string|number|null)[]} Row
 */

export const COLUMNS = ['time', 'address', 'name', 'min', 'max', 'last', 'state'];

const POINTS = 2000;
const PIECE_MS = 30000;
const MOST_PIECES = 20;

/**
 * @param {Series} series
 * @param {Span} span
 */
function timesOf(series, { from, to }) {
  const times = new Set([from, ...series.t]);
  for (const [begin, end] of series.gaps) times.add(begin).add(end);
  return [...times].filter((at) => at >= from && at <= to).sort((one, other) => one - other);
}

/**
 * Least, greatest and last value at a time, and the state: good, or why there is none.
 * @param {Series} series
 * @param {number} at
 * @returns {Row}
 */
function cellsOf(series, at) {
  const gap = gapAt(series, at);
  if (gap) return [null, null, null, gap[2]];
  const value = valueAt(series, at);
  if (value === null) return [null, null, null, 'not known'];
  const place = lowerBound(series.t, at);
  return series.t[place] === at ? [series.min[place], series.max[place], series.last[place], 'good']
    : [value, value, value, 'good'];
}

/**
 * @param {Series} series
 * @param {{address: string, name: string}} variable
 * @param {Span} span what lies outside is left out
 * @returns {Row[]}
 */
export function seriesRows(series, { address, name }, span) {
  return timesOf(series, span).map((at) => [new Date(at).toISOString(), address, name, ...cellsOf(series, at)]);
}

/**
 * Asked for in pieces, so that a long span loses as little as can be.
 * @param {string} address
 * @param {Span} span
 */
async function courseOf(address, { from, to }) {
  const pieces = Math.min(MOST_PIECES, Math.max(1, Math.ceil((to - from) / PIECE_MS)));
  const step = (to - from) / pieces;
  /** @type {Series|null} */
  let series = null;
  for (let piece = 0; piece < pieces; piece += 1) {
    /** @type {History} */
    const history = await get('history', {
      address, from: Math.floor(from + piece * step), to: Math.ceil(from + (piece + 1) * step), points: POINTS,
    });
    series = series ? merged(series, seriesOf(history)) : seriesOf(history);
  }
  return /** @type {Series} */ (series);
}

/**
 * @param {Variable[]} variables
 * @param {Span} span
 */
export async function trendCsv(variables, span) {
  /** @type {Row[]} */
  const rows = [COLUMNS];
  for (const variable of variables) {
    rows.push(...seriesRows(await courseOf(variable.address, span), variable, span));
  }
  return csv(rows);
}
