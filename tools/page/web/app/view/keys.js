// The page's keys, each in one place: what it is called under "?" and what it does.
import { element, make } from './dom.js';

/**
 * @typedef {object} Key
 * @property {string} key as KeyboardEvent.key has it
 * @property {string} does
 * @property {() => void} act
 */

/** @param {EventTarget|null} target */
function takesText(target) {
  return target instanceof HTMLInputElement ? !['checkbox', 'range'].includes(target.type)
    : target instanceof HTMLSelectElement;
}

/** Whether a dialog is open that keeps the keys to itself. */
function dialogOpen() {
  return document.querySelector('dialog[open]') !== null;
}

export class Keys {
  /** @type {Map<string, () => void>} */
  #acts = new Map();
  #help = element('help', HTMLDialogElement);
  #list = element('help-keys', HTMLElement);

  constructor() {
    element('help-open', HTMLButtonElement).addEventListener('click', () => this.#help.showModal());
    element('help-close', HTMLButtonElement).addEventListener('click', () => this.#help.close());
    document.addEventListener('keydown', (event) => this.#pressed(event));
    this.add({ key: '?', does: 'these keys', act: () => this.#help.showModal() });
  }

  /** @param {Key} key */
  add(key) {
    this.#acts.set(key.key, key.act);
    this.describe(key.key, key.does);
  }

  /**
   * A line under "?" for a key that a view handles itself.
   * @param {string} keys
   * @param {string} does
   */
  describe(keys, does) {
    this.#list.append(make('dt', {}, make('kbd', { text: keys })), make('dd', { text: does }));
  }

  /** @param {KeyboardEvent} event */
  #pressed(event) {
    if (event.ctrlKey || event.metaKey || event.altKey || event.defaultPrevented) return;
    if (takesText(event.target) || dialogOpen()) return;
    const act = this.#acts.get(event.key);
    if (!act) return;
    event.preventDefault();
    act();
  }
}
