// The table of values: filter, rows in sight, pin, Why?, write.
import { dayTime } from '../text/ages.js';
import { SparkLoader } from '../feed/spark_loader.js';
import { counted } from '../text/numbers.js';
import { kindOf, look, valueText } from '../text/qualities.js';
import { element, setText } from '../view/dom.js';
import { VirtualRows } from '../view/virtual_rows.js';
import { listed } from './filter.js';
import { drawSparkline } from './sparkline.js';
import { createValueRow, fillValueRow } from './value_row.js';

/**
 * @typedef {import('../feed/store.js').Store} Store
 * @typedef {import('../feed/messages.js').Variable} Variable
 * @typedef {import('../feed/spark_memory.js').SparkMemory} SparkMemory
 * @typedef {import('./value_row.js').RowParts} RowParts
 *
 * @typedef {object} Actions what a row asks others to do
 * @property {(variable: Variable) => void} why
 * @property {(variable: Variable) => void} write
 * @property {(variable: Variable) => void} pin
 * @property {(variable: Variable) => string} denied why a variable cannot be written; empty when it can
 */

const ROW_HEIGHT = 26;
const SPARK_EVERY_MS = 1000;

export class ValuesView {
  #store;
  #sparks;
  #colours;
  #actions;
  #filter = element('filter', HTMLInputElement);
  #onlyBad = element('only-bad', HTMLInputElement);
  #detail = element('values-detail', HTMLElement);
  #count = element('values-count', HTMLElement);
  #age = element('values-age', HTMLElement);
  /** @type {number[]} */
  #listed = [];
  #drawSparks = true;
  #sparksDrawn = 0;
  #loader;
  /** @type {VirtualRows<RowParts>} */
  #rows;

  /**
   * @param {Store} store
   * @param {SparkMemory} sparks
   * @param {import('../view/colours.js').Colours} colours
   * @param {Actions} actions
   */
  constructor(store, sparks, colours, actions) {
    this.#store = store;
    this.#sparks = sparks;
    this.#colours = colours;
    this.#actions = actions;
    this.#loader = new SparkLoader(store, sparks, () => this.#list());
    const box = element('values-rows', HTMLElement);
    this.#rows = new VirtualRows(box, {
      height: ROW_HEIGHT,
      create: createValueRow,
      fill: (parts, place, root) => this.#fill(parts, place, root),
      key: (place, event) => this.#key(place, event),
      moved: () => this.#say(),
    });
    box.addEventListener('click', (event) => this.#clicked(event));
    this.#filter.addEventListener('input', () => this.#list());
    this.#filter.addEventListener('keydown', (event) => this.#filterKey(event));
    this.#onlyBad.addEventListener('change', () => this.#list());
    colours.onChange(() => this.#list());
    store.on(['variables'], () => this.#list());
    store.on(['values', 'pins', 'status', 'link'], () => this.#draw());
  }

  /** Gives the keys to the table. */
  focus() {
    this.#rows.focus(this.#rows.current);
  }

  focusFilter() {
    this.#filter.focus();
    this.#filter.select();
  }

  #list() {
    this.#choose();
    this.#sparksDrawn = 0;
    this.#show();
  }

  #choose() {
    const { variables, values } = this.#store;
    const before = this.#listed;
    this.#listed = listed(variables, values, this.#filter.value, this.#onlyBad.checked,
      this.#store.link === 'live');
    element('values-grid', HTMLElement).setAttribute('aria-rowcount', String(this.#listed.length + 1));
    const isSame = before.length === this.#listed.length && before.every((index, i) => index === this.#listed[i]);
    if (!isSame) this.#sparksDrawn = 0;
  }

  #draw() {
    // What is chosen by its quality comes and goes with it.
    if (this.#onlyBad.checked || this.#filter.value !== '') this.#choose();
    this.#show();
  }

  #show() {
    const now = performance.now();
    this.#drawSparks = now - this.#sparksDrawn >= SPARK_EVERY_MS;
    if (this.#drawSparks) this.#sparksDrawn = now;
    this.#rows.show(this.#listed.length);
    this.#drawSparks = true;
    this.#say();
    const all = this.#store.variables.length;
    const { length } = this.#listed;
    // A recording has a sample at each change and one a minute, not each reading.
    setText(this.#age, this.#store.status?.replay ? 'Sample' : 'Age');
    setText(this.#count, length === all ? counted(all, 'variable') : `${length} of ${counted(all, 'variable')}`);
  }

  /** The current row in full, under the table: nothing is cut off there. */
  #say() {
    const variable = this.#variable(this.#rows.current);
    if (!variable) {
      setText(this.#detail, '');
      return;
    }
    const row = this.#store.values[variable.index];
    const { word, reason } = look(row, this.#store.link === 'live');
    const name = variable.name === variable.address ? variable.name : `${variable.name} = ${variable.address}`;
    const changed = row[6] === null ? '' : `, changed ${dayTime(row[6], this.#store.clock.now())}`;
    setText(this.#detail, `${name} · ${kindOf(variable)}, station ${variable.station} · ${valueText(row)} · ${word}`
      + `${reason === '' ? '' : `: ${reason}`}${changed}`);
  }

  /** @param {number} place */
  #variable(place) {
    return this.#store.variables[this.#listed[place]];
  }

  /**
   * @param {RowParts} parts
   * @param {number} place
   * @param {HTMLElement} root
   */
  #fill(parts, place, root) {
    const index = this.#listed[place];
    const variable = this.#store.variables[index];
    if (!variable) return;
    const fresh = parts.shown !== variable;
    const now = this.#store.clock.now();
    fillValueRow(parts, root, variable, this.#store.values[index], {
      place, now, current: place === this.#rows.current, live: this.#store.link === 'live',
      pinned: this.#store.isPinned(variable.address), denied: this.#actions.denied(variable),
    });
    if (fresh || this.#drawSparks) {
      this.#loader.want(variable);
      drawSparkline(parts.spark, this.#sparks, index, now, this.#colours.of('line'));
    }
  }

  /** @param {MouseEvent} event */
  #clicked(event) {
    if (!(event.target instanceof Element)) return;
    const row = event.target.closest('[data-row]');
    if (!(row instanceof HTMLElement)) return;
    const place = Number(row.dataset.row);
    const pressed = event.target.closest('button');
    if (!pressed) this.#rows.focus(place);
    else this.#act(place, pressed.dataset.test ?? '');
  }

  /**
   * @param {number} place
   * @param {string} what
   */
  #act(place, what) {
    const variable = this.#variable(place);
    if (!variable) return;
    if (what === 'pin') this.#actions.pin(variable);
    if (what === 'why-open') this.#actions.why(variable);
    if (what === 'write-open') this.#actions.write(variable);
  }

  /**
   * @param {number} place
   * @param {KeyboardEvent} event
   */
  #key(place, event) {
    const onButton = event.target instanceof HTMLButtonElement;
    /** @type {Record<string, string>} */
    const acts = { p: 'pin', w: 'write-open', y: 'why-open' };
    if (!onButton) acts.Enter = 'why-open';
    if (!(event.key in acts)) return false;
    this.#act(place, acts[event.key]);
    return true;
  }

  /** @param {KeyboardEvent} event */
  #filterKey(event) {
    if (!['Enter', 'ArrowDown', '/'].includes(event.key)) return;
    event.preventDefault();
    if (event.key === '/') this.focusFilter();
    else this.#rows.focus(0);
  }
}
