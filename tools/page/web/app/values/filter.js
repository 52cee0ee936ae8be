// Which variables are listed: those that have every word of the filter in name, address, type or quality, as shown.

import { look } from '../text/qualities.js';

/**
 * @typedef {import('../feed/messages.js').Variable} Variable
 * @typedef {import('../feed/messages.js').ValueRow} ValueRow
 */

/**
 * The indexes of the variables to list.
 * @param {Variable[]} variables
 * @param {ValueRow[]} values
 * @param {string} filter
 * @param {boolean} onlyBad those whose value is not good
 * @param {boolean} live whether the program is heard: without it no value is good
 * @returns {number[]}
 */
export function listed(variables, values, filter, onlyBad, live) {
  const words = filter.toLowerCase().split(/\s+/).filter((word) => word !== '');
  /** @type {number[]} */
  const found = [];
  variables.forEach((variable, index) => {
    const { quality } = look(values[index], live);
    if (onlyBad && quality === 'good') return;
    const text = `${variable.name} ${variable.address} ${variable.type} ${quality}`.toLowerCase();
    if (words.every((word) => text.includes(word))) found.push(index);
  });
  return found;
}
