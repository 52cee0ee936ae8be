// Why is a value as it is? The steps from its address to what is seen, asked anew each second while open.
import { get } from '../link/requests.js';
import { element, make, setAttribute, setText, show } from '../view/dom.js';

/**
 * @typedef {import('../feed/store.js').Store} Store
 * @typedef {import('../feed/messages.js').Explanation} Explanation
 * @typedef {import('../feed/messages.js').Step} Step
 *
 * @typedef {object} StepParts
 * @property {HTMLElement} root
 * @property {HTMLElement} mark
 * @property {HTMLElement} title
 * @property {HTMLElement} text
 * @property {HTMLDetailsElement} details
 * @property {HTMLElement} detail
 */

const EVERY_MS = 1000;

/** @param {boolean|null} ok */
function mark(ok) {
  if (ok === null) return { sign: '?', word: 'not known' };
  return ok ? { sign: '✓', word: 'in order' } : { sign: '✕', word: 'not in order' };
}

/** @returns {StepParts} */
function createStep() {
  const parts = {
    mark: make('span', { class: 'why-mark', role: 'img' }),
    title: make('strong', { class: 'why-step-title' }),
    text: make('span', { class: 'why-text' }),
    detail: make('pre', {}),
  };
  const details = make('details', {}, make('summary', { text: 'Bytes and details' }), parts.detail);
  const root = make('li', { class: 'why-step', 'data-test': 'why-step' }, parts.mark,
    make('div', {}, parts.title, parts.text, details));
  return { ...parts, details, root };
}

export class ExplainDrawer {
  #store;
  #drawer = element('why', HTMLElement);
  #title = element('why-title', HTMLElement);
  #conclusion = element('why-conclusion', HTMLElement);
  #list = element('why-steps', HTMLElement);
  /** @type {StepParts[]} */
  #steps = [];
  /** @type {string|null} */
  #address = null;
  #asked = 0;
  /** @type {Element|null} what had the focus */
  #before = null;

  /** @param {Store} store */
  constructor(store) {
    this.#store = store;
    element('why-close', HTMLButtonElement).addEventListener('click', () => this.close());
    this.#drawer.addEventListener('keydown', (event) => {
      if (event.key === 'Escape') this.close();
    });
    setInterval(() => this.#ask(), EVERY_MS);
    store.on(['link'], () => this.#ask());
  }

  /** @param {string} address */
  open(address) {
    if (this.#address === null) this.#before = document.activeElement;
    this.#address = address;
    this.#steps = [];
    this.#list.replaceChildren();
    const name = this.#store.variableAt(address)?.name ?? address;
    setText(this.#title, `Why? ${name}`);
    setText(this.#conclusion, 'Asking …');
    this.#drawer.removeAttribute('data-ok');
    this.#drawer.dataset.address = address;
    show(this.#drawer, true);
    this.#title.focus();
    this.#ask();
  }

  close() {
    if (this.#address === null) return;
    this.#address = null;
    show(this.#drawer, false);
    if (this.#before instanceof HTMLElement) this.#before.focus();
  }

  async #ask() {
    const address = this.#address;
    if (address === null) return;
    if (this.#store.link !== 'live') {
      this.#fail('The page has lost the program: what stands below is as it was.');
      return;
    }
    this.#asked += 1;
    const mine = this.#asked;
    try {
      /** @type {Explanation} */
      const answer = await get('explain', { address });
      if (mine === this.#asked && address === this.#address) this.#draw(answer);
    } catch (problem) {
      if (address === this.#address) this.#fail(problem instanceof Error ? problem.message : String(problem));
    }
  }

  /** @param {string} text */
  #fail(text) {
    setText(this.#conclusion, text);
    setAttribute(this.#drawer, 'data-ok', 'null');
  }

  /** @param {Explanation} answer */
  #draw({ name, steps, conclusion }) {
    setText(this.#title, `Why? ${name}`);
    setText(this.#conclusion, conclusion);
    setAttribute(this.#drawer, 'data-ok', String(steps.every((step) => step.ok === true)));
    while (this.#steps.length < steps.length) {
      const step = createStep();
      this.#steps.push(step);
      this.#list.append(step.root);
    }
    for (const extra of this.#steps.splice(steps.length)) extra.root.remove();
    steps.forEach((step, place) => this.#drawStep(this.#steps[place], step));
  }

  /**
   * @param {StepParts} parts
   * @param {Step} step
   */
  #drawStep(parts, step) {
    const { sign, word } = mark(step.ok);
    setAttribute(parts.root, 'data-step', step.step);
    setAttribute(parts.root, 'data-ok', String(step.ok));
    setText(parts.mark, sign);
    setAttribute(parts.mark, 'aria-label', word);
    setText(parts.title, step.title);
    setText(parts.text, step.text);
    show(parts.details, step.detail !== null && step.detail !== '');
    setText(parts.detail, step.detail ?? '');
  }
}
