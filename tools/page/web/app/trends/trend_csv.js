// The course of pinned variables as rows: time, address, name, least, greatest and last value, state.
import { csv } from '../text/csv.js';
import { get } from '../link/requests.js';

/**
 * @typedef {import('../feed/messages.js').History} History
 * @typedef {import('../feed/messages.js').Variable} Variable
 * @typedef {import('./time_window.js').Span} Span
 * @typedef {(string|number|null)[]} Row
 */

export const COLUMNS = ['time', 'address', 'name', 'min', 'max', 'last', 'state'];

const POINTS = 2000;
const PIECES = 20;

/**
 * The rows of one answer: readings and, where the value was not good, the reason.
 * @param {History} history
 * @param {string} name
 * @param {Span} span what lies outside is left out
 * @returns {Row[]}
 */
export function historyRows(history, name, { from, to }) {
  const { address } = history;
  /** @type {{at: number, row: Row}[]} */
  const rows = [];
  history.t.forEach((at, place) => {
    if (at < from || at > to) return;
    const values = [history.min[place], history.max[place], history.last[place]];
    rows.push({ at, row: [new Date(at).toISOString(), address, name, ...values, 'good'] });
  });
  for (const [begin, , reason] of history.gaps) {
    const at = Math.max(begin, from);
    if (at > to) continue;
    rows.push({ at, row: [new Date(at).toISOString(), address, name, null, null, null, reason] });
  }
  rows.sort((a, b) => a.at - b.at);
  return rows.map(({ row }) => row);
}

/**
 * The CSV of a span: asked for in pieces, so that a long one loses as little as can be.
 * @param {Variable[]} variables
 * @param {Span} span
 */
export async function trendCsv(variables, { from, to }) {
  /** @type {Row[]} */
  const rows = [COLUMNS];
  const pieces = Math.min(PIECES, Math.max(1, Math.ceil((to - from) / 30000)));
  const step = (to - from) / pieces;
  for (const variable of variables) {
    for (let piece = 0; piece < pieces; piece += 1) {
      const begin = from + piece * step;
      const end = piece === pieces - 1 ? to : begin + step;
      /** @type {History} */
      const history = await get('history', {
        address: variable.address, from: Math.floor(begin), to: Math.ceil(end), points: POINTS,
      });
      rows.push(...historyRows(history, variable.name, { from: begin, to: piece === pieces - 1 ? end : end - 1e-6 }));
    }
  }
  return csv(rows);
}
