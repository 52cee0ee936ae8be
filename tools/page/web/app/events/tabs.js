// Events, frames and plan share one place: tabs as the keyboard knows them, one filter, one capture button.
import { element, show } from '../view/dom.js';

/**
 * @typedef {'events'|'frames'|'plan'} TabName
 *
 * @typedef {object} Tab
 * @property {TabName} name
 * @property {(shown: boolean) => void} shown
 * @property {(text: string) => void} [filter]
 */

export class Tabs {
  #tabs;
  #filter = element('happened-filter', HTMLInputElement);

  /** @param {Tab[]} tabs */
  constructor(tabs) {
    this.#tabs = tabs;
    for (const { name } of tabs) {
      this.#button(name).addEventListener('click', () => this.open(name));
    }
    element('tabs', HTMLElement).addEventListener('keydown', (event) => this.#pressed(event));
    this.#filter.addEventListener('input', () => this.#tabs.forEach((tab) => tab.filter?.(this.#filter.value)));
  }

  /** @param {TabName} name */
  #button(name) {
    return element(`tab-${name}`, HTMLButtonElement);
  }

  /** @param {TabName} name */
  open(name) {
    for (const tab of this.#tabs) {
      const open = tab.name === name;
      const button = this.#button(tab.name);
      button.setAttribute('aria-selected', String(open));
      button.tabIndex = open ? 0 : -1;
      show(element(tab.name, HTMLElement), open);
      if (open) show(this.#filter, tab.filter !== undefined);
      tab.shown(open);
    }
  }

  /** @param {TabName} name */
  focus(name) {
    this.#button(name).focus();
  }

  /** @param {KeyboardEvent} event */
  #pressed(event) {
    const names = this.#tabs.map((tab) => tab.name);
    const at = names.findIndex((name) => this.#button(name) === event.target);
    /** @type {Record<string, number>} */
    const moves = { ArrowRight: at + 1, ArrowLeft: at - 1, Home: 0, End: names.length - 1 };
    if (at < 0 || !(event.key in moves)) return;
    event.preventDefault();
    const next = names[(moves[event.key] + names.length) % names.length];
    this.open(next);
    this.#button(next).focus();
  }
}
