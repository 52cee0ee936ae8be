// The requests of a pass, why each ends where it does, and hints.
import { get } from '../link/requests.js';
import { counted } from '../text/numbers.js';
import { element, make } from '../view/dom.js';

/**
 * @typedef {import('../feed/store.js').Store} Store
 * @typedef {import('../feed/messages.js').Plan} Plan
 * @typedef {import('../feed/messages.js').PlannedRequest} PlannedRequest
 */

const COLUMNS = ['Request', 'Station', 'Asks', 'From – to', 'Ends because'];

export class PlanView {
  #store;
  #pane = element('plan', HTMLElement);
  #shown = false;
  /** Which plan is shown: epoch, generation of the list, and of the plan. */
  #known = '';

  /** @param {Store} store */
  constructor(store) {
    this.#store = store;
    store.on(['variables', 'link', 'status'], () => this.#ask());
  }

  /** @param {boolean} shown */
  show(shown) {
    this.#shown = shown;
    this.#ask();
  }

  focus() {
    this.#pane.focus();
    return true;
  }

  async #ask() {
    const { epoch, generation, status, link } = this.#store;
    const wanted = `${epoch} ${generation} ${status?.planGeneration}`;
    if (!this.#shown || link !== 'live' || wanted === this.#known) return;
    this.#known = wanted;
    try {
      const plan = await get('plan');
      if (wanted === this.#known) this.#draw(plan);
    } catch (problem) {
      if (wanted !== this.#known) return; // a newer one is asked for
      this.#known = '';
      const words = problem instanceof Error ? problem.message : String(problem);
      this.#pane.replaceChildren(make('p', { class: 'empty', text: `No plan: ${words}` }));
    }
  }

  /** @param {Plan} plan */
  #draw(plan) {
    const sum = `${counted(plan.requests.length, 'request')} for ${counted(plan.passElements, 'element')} of a pass`;
    const head = make('tr', {}, ...COLUMNS.map((text) => make('th', { scope: 'col', text })));
    const rows = plan.requests.map((request) => this.#row(request));
    const hints = plan.hints.map((text) => make('li', { text, 'data-test': 'plan-hint' }));
    this.#pane.replaceChildren(
      make('p', { class: 'plan-sum', text: sum }),
      ...(hints.length === 0 ? [] : [make('ul', { class: 'plan-hints', 'aria-label': 'Hints' }, ...hints)]),
      make('table', { class: 'plan-table' }, make('thead', {}, head), ...rows),
    );
  }

  /** @param {PlannedRequest} request */
  #row(request) {
    const asks = `${request.function}: ${counted(request.elements, 'element')}, ${counted(request.bytes, 'byte')}`;
    const span = request.first === request.last ? request.first : `${request.first} – ${request.last}`;
    const texts = [`${request.number} of ${request.of}`, String(request.station), asks, span, request.ends];
    const carried = make('details', {}, make('summary', { text: counted(request.variables.length, 'variable') }),
      make('span', { text: request.variables.join(', ') }));
    const names = make('td', { colspan: String(COLUMNS.length), class: 'plan-names' }, carried);
    return make('tbody', { 'data-test': 'plan-request' },
      make('tr', {}, ...texts.map((each) => make('td', { text: each }))), make('tr', {}, names));
  }
}
