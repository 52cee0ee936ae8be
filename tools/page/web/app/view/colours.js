// Light, dark, or as the system has it; and the style sheet's colours for what is drawn on a canvas.
import { element, make } from './dom.js';

const KEY = 'colours';
const CHOICES = ['auto', 'light', 'dark'];
/** @type {Record<string, string>} */
const SIGNS = { auto: '◐', light: '☀', dark: '☾' };

/** @typedef {'line'|'grid'|'axis'|'gap'|'gap-edge'|'nothing'|'mark'|'mark-bad'|'cursor-a'|'cursor-b'} Drawn */

export class Colours {
  #choice = localStorage.getItem(KEY) ?? 'auto';
  #button = element('theme', HTMLButtonElement);
  #probe = make('span', { class: 'unseen' });
  /** @type {Map<Drawn, string>} */
  #known = new Map();
  /** @type {(() => void)[]} */
  #listeners = [];

  constructor() {
    document.body.append(this.#probe);
    this.#button.addEventListener('click', () => this.#next());
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => this.#changed());
    this.#apply();
  }

  /** @param {() => void} listener */
  onChange(listener) {
    this.#listeners.push(listener);
  }

  /**
   * The colour behind the variable `--draw-NAME`, as a canvas takes it.
   * @param {Drawn} name
   */
  of(name) {
    const known = this.#known.get(name);
    if (known !== undefined) return known;
    this.#probe.style.color = `var(--draw-${name})`;
    const colour = getComputedStyle(this.#probe).color;
    this.#known.set(name, colour);
    return colour;
  }

  #next() {
    this.#choice = CHOICES[(CHOICES.indexOf(this.#choice) + 1) % CHOICES.length];
    localStorage.setItem(KEY, this.#choice);
    this.#apply();
    this.#changed();
  }

  #apply() {
    if (!CHOICES.includes(this.#choice)) this.#choice = 'auto';
    document.documentElement.dataset.theme = this.#choice;
    this.#button.textContent = `${SIGNS[this.#choice]} ${this.#choice}`;
    this.#button.setAttribute('aria-label', `Colours: ${this.#choice}`);
  }

  #changed() {
    this.#known.clear();
    for (const listener of this.#listeners) listener();
  }
}
