// What happened, newest first: filtered, with the time to the one before.
import { after, clockTime } from '../text/ages.js';
import { element, make, setAttribute, setText, show } from '../view/dom.js';
import { VirtualRows } from '../view/virtual_rows.js';

/**
 * @typedef {import('../feed/store.js').Store} Store
 * @typedef {import('../feed/messages.js').PageEvent} PageEvent
 *
 * @typedef {object} EventParts
 * @property {HTMLElement} time
 * @property {HTMLElement} after
 * @property {HTMLElement} kind
 * @property {HTMLElement} text
 */

const ROW_HEIGHT = 24;

/** @type {Record<string, string>} */
const KIND_WORDS = {
  connected: 'connected', connectFailed: 'connect failed', connectionLost: 'connection lost', closed: 'closed',
  timeout: 'time-out', exception: 'exception', gaveUp: 'gave up', late: 'late', stray: 'stray',
  framesDropped: 'frames dropped', write: 'write', read: 'read', planChanged: 'plan changed', setAside: 'set aside',
  back: 'back', gap: 'gap', storage: 'storage', clock: 'clock set back',
};

/** @returns {{root: HTMLElement, parts: EventParts}} */
function createRow() {
  const parts = {
    time: make('span', { class: 'list-time' }),
    after: make('span', { class: 'list-after' }),
    kind: make('span', { class: 'list-kind', 'data-test': 'event-kind' }),
    text: make('span', { class: 'list-text', 'data-test': 'event-text' }),
  };
  const root = make('div', { class: 'list-row events-columns', role: 'option', 'data-test': 'event' },
    parts.time, parts.after, parts.kind, parts.text);
  return { root, parts };
}

export class EventsView {
  #store;
  #why;
  /** @type {PageEvent[]} newest first */
  #listed = [];
  #filter = '';
  #newest = -1;
  #empty = element('events-empty', HTMLElement);
  #detail = element('event-detail', HTMLElement);
  /** @type {VirtualRows<EventParts>} */
  #rows;

  /**
   * @param {Store} store
   * @param {(address: string) => void} why
   */
  constructor(store, why) {
    this.#store = store;
    this.#why = why;
    const box = element('events-rows', HTMLElement);
    this.#rows = new VirtualRows(box, {
      height: ROW_HEIGHT,
      create: createRow,
      fill: (parts, place, root) => this.#fill(parts, place, root),
      key: (place, event) => event.key === 'Enter' && this.#open(place),
      moved: () => this.#say(),
    });
    box.addEventListener('click', (event) => {
      const row = event.target instanceof Element ? event.target.closest('[data-row]') : null;
      if (!(row instanceof HTMLElement)) return;
      this.#rows.focus(Number(row.dataset.row));
    });
    box.addEventListener('dblclick', () => this.#open(this.#rows.current));
    store.on(['events', 'variables'], () => this.#list());
  }

  /** False when there is nothing to give the focus to. */
  focus() {
    return this.#rows.focus(this.#rows.current);
  }

  /** @param {string} text */
  filter(text) {
    this.#filter = text.toLowerCase();
    this.#newest = -1;
    this.#list();
  }

  #list() {
    const words = this.#filter.split(/\s+/).filter((word) => word !== '');
    this.#listed = this.#store.events.filter((event) => {
      const text = `${KIND_WORDS[event.kind] ?? event.kind} ${event.text} ${event.variable ?? ''}`.toLowerCase();
      return words.every((word) => text.includes(word));
    }).reverse();
    const fresh = this.#newest < 0 ? 0 : this.#listed.filter((event) => event.id > this.#newest).length;
    this.#newest = this.#listed.length === 0 ? -1 : this.#listed[0].id;
    this.#rows.show(this.#listed.length);
    if (fresh > 0) this.#rows.shift(fresh);
    this.#say();
    show(this.#empty, this.#listed.length === 0);
    setText(this.#empty, words.length === 0 ? 'Nothing has happened yet.' : 'No event has these words.');
  }

  /**
   * @param {EventParts} parts
   * @param {number} place
   * @param {HTMLElement} root
   */
  #fill(parts, place, root) {
    const event = this.#listed[place];
    if (!event) return;
    const before = this.#listed[place + 1];
    setText(parts.time, clockTime(event.at, true));
    setText(parts.after, before ? after(event.at - before.at) : '');
    setText(parts.kind, `${event.bad ? '✕' : '·'} ${KIND_WORDS[event.kind] ?? event.kind}`);
    setText(parts.text, event.text);
    setAttribute(root, 'title', event.text);
    setAttribute(root, 'data-kind', event.kind);
    setAttribute(root, 'data-bad', String(event.bad));
    setAttribute(root, 'data-id', String(event.id));
  }

  /** The current event in full, under the list. */
  #say() {
    const event = this.#listed[this.#rows.current];
    show(this.#detail, event !== undefined);
    if (!event) return;
    const known = event.address !== null && this.#store.variableAt(event.address) !== null;
    const asks = known ? ' (Enter or double click: Why?)' : '';
    setText(this.#detail, `${clockTime(event.at, true)} ${event.text}${asks}`);
  }

  /** @param {number} place */
  #open(place) {
    const address = this.#listed[place]?.address ?? null;
    if (address === null || this.#store.variableAt(address) === null) return false;
    this.#why(address);
    return true;
  }
}
