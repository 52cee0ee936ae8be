// How a quality looks and reads, once for all views: a sign of its own, not a colour alone.

import { counted } from './numbers.js';

/**
 * @typedef {import('../feed/messages.js').Quality} Quality
 * @typedef {import('../feed/messages.js').ValueRow} ValueRow
 * @typedef {Quality|'unknown'} Shown what is shown: unknown while the page has lost the program
 *
 * @typedef {object} Look
 * @property {Shown} quality
 * @property {string} sign
 * @property {string} word
 * @property {string} reason
 */

/** @type {Record<Shown, string>} */
const SIGNS = { good: '●', stale: '◷', bad: '✕', never: '○', unconfirmed: '◐', unknown: '?' };

const LOST = 'page lost the program';

/**
 * @param {ValueRow} row
 * @param {boolean} live whether the program is heard
 * @returns {Look}
 */
export function look(row, live) {
  const quality = row[3];
  if (live) return { quality, sign: SIGNS[quality] ?? '?', word: quality, reason: row[4] };
  const was = quality === 'never' ? 'never read before that' : `was ${quality}`;
  return { quality: 'unknown', sign: SIGNS.unknown, word: 'unknown', reason: `${LOST}; ${was}` };
}

/**
 * What a variable is: "word", "text of 8 words".
 * @param {import('../feed/messages.js').Variable} variable
 */
export function kindOf({ type, elements }) {
  return type === 'text' ? `text of ${counted(elements, 'word')}` : type;
}

/**
 * A value's text: never a number where nothing was read.
 * @param {ValueRow} row
 */
export function valueText(row) {
  return row[3] === 'never' ? '–' : row[1];
}
