// One row of the values: made once, filled often, writing only what differs.
import { age } from '../text/ages.js';
import { kindOf, look, valueText } from '../text/qualities.js';
import { make, setAttribute, setText } from '../view/dom.js';

/**
 * @typedef {import('../feed/messages.js').Variable} Variable
 * @typedef {import('../feed/messages.js').ValueRow} ValueRow
 *
 * @typedef {object} RowParts
 * @property {HTMLButtonElement} pin
 * @property {HTMLElement} name
 * @property {HTMLElement} value
 * @property {HTMLElement} mark
 * @property {HTMLElement} text
 * @property {HTMLElement} sign
 * @property {HTMLElement} word
 * @property {HTMLElement} reason
 * @property {HTMLElement} age
 * @property {HTMLCanvasElement} spark
 * @property {HTMLButtonElement} why
 * @property {HTMLButtonElement} write
 * @property {Variable|null} shown the variable whose fixed parts are written
 *
 * @typedef {object} RowState
 * @property {number} place in the list as it is filtered
 * @property {boolean} current whether the keys go to this row
 * @property {boolean} live whether the program is heard
 * @property {boolean} pinned
 * @property {number} now
 * @property {string} denied why it cannot be written; empty when it can
 */

/**
 * @param {string} test
 * @param {string} text
 */
function button(test, text) {
  return make('button', { type: 'button', class: 'row-button', tabindex: '-1', 'data-test': test, text });
}

/** @returns {{root: HTMLElement, parts: RowParts}} */
export function createValueRow() {
  /** @type {RowParts} */
  const parts = {
    pin: button('pin', '☆'),
    name: make('bdi', { class: 'value-name-text', dir: 'ltr', 'data-test': 'name' }),
    value: make('span', { class: 'value-value', role: 'gridcell', 'data-test': 'value' }),
    mark: make('span', { class: 'value-mark', 'aria-hidden': 'true' }),
    text: make('span', { class: 'value-text', 'data-test': 'value-text' }),
    sign: make('span', { class: 'quality-sign', 'aria-hidden': 'true' }),
    word: make('span', { class: 'quality-word', 'data-test': 'quality' }),
    reason: make('span', { class: 'quality-reason', 'data-test': 'reason' }),
    age: make('span', { class: 'value-age', role: 'gridcell', 'data-test': 'age' }),
    spark: make('canvas', { class: 'spark', width: '120', height: '32', 'aria-hidden': 'true' }),
    why: button('why-open', 'Why?'),
    write: button('write-open', '✎'),
    shown: null,
  };
  parts.value.append(parts.mark, parts.text);
  const quality = make('span', { class: 'value-quality', role: 'gridcell' }, parts.sign, parts.word, parts.reason);
  const root = make(
    'div', { class: 'value-row', role: 'row', 'data-test': 'value-row' },
    make('span', { role: 'gridcell' }, parts.pin),
    make('span', { class: 'value-name', role: 'gridcell' }, parts.name), parts.value, quality, parts.age,
    make('span', { role: 'gridcell' }, parts.spark),
    make('span', { class: 'value-buttons', role: 'gridcell' }, parts.why, parts.write),
  );
  return { root, parts };
}

/**
 * @param {RowParts} parts
 * @param {HTMLElement} root
 * @param {Variable} variable
 */
function fillFixed(parts, root, variable) {
  parts.shown = variable;
  root.dataset.address = variable.address;
  setText(parts.name, variable.name);
  parts.name.title = `${variable.name}\n${variable.address} · ${kindOf(variable)} · station ${variable.station}`;
  parts.why.setAttribute('aria-label', `Why is ${variable.name} as it is?`);
  parts.write.setAttribute('aria-label', `Write ${variable.name}`);
}

/**
 * @param {RowParts} parts
 * @param {HTMLElement} root
 * @param {Variable} variable
 * @param {ValueRow} row
 * @param {RowState} state
 */
export function fillValueRow(parts, root, variable, row, state) {
  if (parts.shown !== variable) fillFixed(parts, root, variable);
  const { quality, sign, word, reason } = look(row, state.live);
  setAttribute(root, 'aria-rowindex', String(state.place + 2));
  setAttribute(root, 'data-quality', quality);
  setText(parts.mark, quality === 'good' || row[3] === 'never' ? '' : sign);
  const text = valueText(row);
  setText(parts.text, text);
  setAttribute(parts.value, 'title', text);
  setText(parts.sign, sign);
  setText(parts.word, word);
  setText(parts.reason, reason);
  setAttribute(parts.reason, 'title', reason);
  setText(parts.age, row[5] === null ? '–' : age(Math.max(0, state.now - row[5])));
  setText(parts.pin, state.pinned ? '★' : '☆');
  setAttribute(parts.pin, 'aria-pressed', String(state.pinned));
  setAttribute(parts.pin, 'aria-label', `Pin ${variable.name} to the trends`);
  setAttribute(parts.write, 'aria-disabled', String(state.denied !== ''));
  setAttribute(parts.write, 'title', state.denied === '' ? 'Write ( w )' : state.denied);
  const tab = state.current ? 0 : -1;
  for (const each of [parts.pin, parts.why, parts.write]) if (each.tabIndex !== tab) each.tabIndex = tab;
}
