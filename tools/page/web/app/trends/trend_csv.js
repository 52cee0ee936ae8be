// The course of pinned variables as a table: a row for each time at which one of them changed, and for each variable
// its value then and its state: good, or why there is none. Where readings were summed up, least and greatest too.
import { gapAt, lowerBound, merged, seriesOf, valueAt } from '../feed/buckets.js';
import { get } from '../link/requests.js';
import { csv } from '../text/csv.js';

/**
 * @typedef {import('../feed/messages.js').History} History
 * @typedef {import('../feed/buckets.js').Series} Series
 * @typedef {import('./time_window.js').Span} Span
 * @typedef {(string|number|null)[]} Row
 * @typedef {{address: string, series: Series}} Course
 */

const POINTS = 2000;
const PIECE_MS = 30000;
const MOST_PIECES = 20;

/**
 * The times of the table: where something begins, and the begin of the span.
 * @param {Course[]} courses
 * @param {Span} span
 */
function timesOf(courses, { from, to }) {
  const times = new Set([from]);
  for (const { series } of courses) {
    for (const at of series.t) times.add(at);
    for (const [begin, end] of series.gaps) times.add(begin).add(end);
  }
  return [...times].filter((at) => at >= from && at <= to).sort((one, other) => one - other);
}

/** @param {Series} series */
function hasSums(series) {
  return series.t.some((_, place) => series.min[place] !== series.max[place]);
}

/**
 * @param {Course} course
 * @param {number} at
 * @param {boolean} sums
 * @returns {Row}
 */
function cellsOf({ series }, at, sums) {
  const gap = gapAt(series, at);
  const value = valueAt(series, at);
  const state = gap ? gap[2] : value === null ? 'not known' : 'good';
  if (!sums) return [value, state];
  const place = lowerBound(series.t, at);
  const own = series.t[place] === at && value !== null;
  return [value, own ? series.min[place] : value, own ? series.max[place] : value, state];
}

/**
 * @param {Course[]} courses
 * @param {Span} span
 * @returns {Row[]} the heading first
 */
export function trendRows(courses, span) {
  const sums = courses.map(({ series }) => hasSums(series));
  const heading = courses.flatMap(({ address }, place) => [
    address, ...(sums[place] ? [`${address} least`, `${address} greatest`] : []), `${address} state`,
  ]);
  const rows = timesOf(courses, span).map((at) => [
    new Date(at).toISOString(), ...courses.flatMap((course, place) => cellsOf(course, at, sums[place])),
  ]);
  return [['time', ...heading], ...rows];
}

/**
 * Asked for in pieces, so that a long span loses as little as can be.
 * @param {string} address
 * @param {Span} span
 * @returns {Promise<Course>}
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
  return { address, series: /** @type {Series} */ (series) };
}

/**
 * @param {string[]} addresses
 * @param {Span} span
 */
export async function trendCsv(addresses, span) {
  const courses = [];
  for (const address of addresses) courses.push(await courseOf(address, span));
  return csv(trendRows(courses, span));
}
