// A list of any length of which only the rows in sight exist. Rows have one height; the row that has the focus
// stays, also when it is scrolled out of sight. Arrow keys, Home, End, PageUp and PageDown move the current row.
import { make } from './dom.js';

const SPARE = 4;

/**
 * @template Row
 * @typedef {object} RowKind
 * @property {number} height in CSS pixels, as the style sheet has it
 * @property {() => {root: HTMLElement, parts: Row}} create
 * @property {(parts: Row, index: number, root: HTMLElement) => void} fill called for every row in sight, often:
 *   it writes what differs only
 * @property {() => void} [moved] another row is the current one
 * @property {(index: number, event: KeyboardEvent) => boolean} [key] a key on the current row; true: taken
 */

/** @template Row */
export class VirtualRows {
  #box;
  #kind;
  #spacer = make('div', { class: 'rows-height', role: 'presentation' });
  #count = 0;
  #current = 0;
  #first = 0;
  #last = -1;
  #height = 0;
  #top = 0;
  /** @type {Map<number, {root: HTMLElement, parts: Row}>} */
  #used = new Map();
  /** @type {{root: HTMLElement, parts: Row}[]} */
  #free = [];

  /**
   * @param {HTMLElement} box scrolls
   * @param {RowKind<Row>} kind
   */
  constructor(box, kind) {
    this.#box = box;
    this.#kind = kind;
    box.append(this.#spacer);
    box.addEventListener('scroll', () => this.#scrolled(), { passive: true });
    box.addEventListener('keydown', (event) => this.#pressed(event));
    box.addEventListener('focusin', (event) => this.#focused(event));
    new ResizeObserver((entries) => this.#resized(entries[0].contentRect.height)).observe(box);
    this.#measureScrollbar();
  }

  get current() {
    return this.#current;
  }

  /**
   * Shows that many rows; fills those in sight.
   * @param {number} count
   */
  show(count) {
    if (count !== this.#count) {
      this.#count = count;
      this.#spacer.style.height = `${count * this.#kind.height}px`;
      this.#current = Math.max(0, Math.min(this.#current, count - 1));
      this.#place();
    }
    this.fill();
  }

  /** Fills the rows in sight anew. */
  fill() {
    for (const [index, { parts, root }] of this.#used) this.#kind.fill(parts, index, root);
  }

  /**
   * After rows were put in front: whoever looks at the first row goes on doing so, else what is in sight and the
   * current row stay what they are.
   * @param {number} rows
   */
  shift(rows) {
    if (this.#current === 0 && this.#top < this.#kind.height) return;
    const focused = this.#used.get(this.#current)?.root === document.activeElement;
    this.#current += rows;
    this.#box.scrollTop += rows * this.#kind.height;
    this.#top = this.#box.scrollTop;
    this.#place();
    this.fill();
    if (focused) this.#used.get(this.#current)?.root.focus({ preventScroll: true });
  }

  /**
   * Makes a row the current one, in sight, and gives it the focus; false when there is none.
   * @param {number} index
   */
  focus(index) {
    if (this.#count === 0) return false;
    this.select(index);
    this.#used.get(this.#current)?.root.focus({ preventScroll: true });
    return true;
  }

  /** @param {number} index */
  select(index) {
    this.#current = Math.max(0, Math.min(index, this.#count - 1));
    const top = this.#current * this.#kind.height;
    if (top < this.#top) this.#box.scrollTop = top;
    else if (top + this.#kind.height > this.#top + this.#height) {
      this.#box.scrollTop = top + this.#kind.height - this.#height;
    }
    this.#top = this.#box.scrollTop;
    this.#place();
    this.fill();
    this.#kind.moved?.();
  }

  #scrolled() {
    this.#top = this.#box.scrollTop;
    if (this.#place()) this.fill();
  }

  /** Tells the style sheet the width of the scroll bar, so that a heading keeps its columns above the rows'. */
  #measureScrollbar() {
    const width = this.#box.offsetWidth - this.#box.clientWidth;
    this.#box.parentElement?.style.setProperty('--scrollbar', `${width}px`);
  }

  /** @param {number} height */
  #resized(height) {
    this.#height = height;
    this.#measureScrollbar();
    if (this.#place()) this.fill();
  }

  /** Gives every row in sight an element; true when rows came or went. */
  #place() {
    const { height } = this.#kind;
    const first = Math.max(0, Math.floor(this.#top / height) - SPARE);
    const last = Math.min(this.#count - 1, Math.ceil((this.#top + this.#height) / height) + SPARE);
    const changed = first !== this.#first || last !== this.#last;
    this.#first = first;
    this.#last = last;
    for (const [index, row] of this.#used) {
      if ((index >= first && index <= last) || (index === this.#current && index < this.#count)) continue;
      row.root.remove();
      this.#used.delete(index);
      this.#free.push(row);
    }
    for (let index = first; index <= last; index += 1) this.#use(index);
    if (this.#count > 0) this.#use(this.#current);
    for (const [index, { root }] of this.#used) root.tabIndex = index === this.#current ? 0 : -1;
    return changed;
  }

  /** @param {number} index */
  #use(index) {
    if (this.#used.has(index)) return;
    const row = this.#free.pop() ?? this.#kind.create();
    row.root.style.transform = `translateY(${index * this.#kind.height}px)`;
    row.root.dataset.row = String(index);
    this.#used.set(index, row);
    this.#box.insertBefore(row.root, this.#next(index));
  }

  /**
   * The element of the next row that exists: rows are read aloud in their order.
   * @param {number} index
   */
  #next(index) {
    let next = Infinity;
    for (const used of this.#used.keys()) if (used > index && used < next) next = used;
    return this.#used.get(next)?.root ?? null;
  }

  /** @param {FocusEvent} event */
  #focused(event) {
    if (!(event.target instanceof Element)) return;
    const row = event.target.closest('[data-row]');
    if (!(row instanceof HTMLElement)) return;
    const index = Number(row.dataset.row);
    if (index === this.#current) return;
    this.#current = index;
    this.#place();
    this.fill();
    this.#kind.moved?.();
  }

  /** @param {KeyboardEvent} event */
  #pressed(event) {
    if (event.ctrlKey || event.metaKey || event.altKey || this.#count === 0) return;
    const page = Math.max(1, Math.floor(this.#height / this.#kind.height) - 1);
    /** @type {Record<string, number>} */
    const moves = {
      ArrowDown: this.#current + 1, ArrowUp: this.#current - 1, PageDown: this.#current + page,
      PageUp: this.#current - page, Home: 0, End: this.#count - 1,
    };
    if (event.key in moves) this.focus(moves[event.key]);
    else if (!this.#kind.key?.(this.#current, event)) return;
    event.preventDefault();
    event.stopPropagation();
  }
}
