// Says things once: to screen readers, and problems also on the screen for some seconds.
import { element, show } from './dom.js';

const SHOWN_MS = 8000;

export class Announcer {
  #spoken = element('announcer', HTMLElement);
  #problem = element('problem', HTMLElement);
  #timer = 0;

  /** @param {string} text */
  say(text) {
    this.#spoken.textContent = text;
  }

  /** @param {string} text */
  problem(text) {
    this.#problem.textContent = text;
    show(this.#problem, true);
    clearTimeout(this.#timer);
    this.#timer = setTimeout(() => show(this.#problem, false), SHOWN_MS);
  }
}
