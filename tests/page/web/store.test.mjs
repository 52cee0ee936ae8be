// The store: what messages do to it, and whom it tells.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { KEPT_EVENTS, MOST_PINS, Store } from '../../../tools/page/web/app/feed/store.js';

/**
 * @typedef {import('../../../tools/page/web/app/feed/messages.js').Snapshot} Snapshot
 * @typedef {import('../../../tools/page/web/app/feed/messages.js').Changes} Changes
 * @typedef {import('../../../tools/page/web/app/feed/messages.js').PageEvent} PageEvent
 * @typedef {import('../../../tools/page/web/app/feed/messages.js').Status} Status
 */

const STATUS = /** @type {Status} */ (/** @type {unknown} */ ({ replay: null }));

/**
 * @param {number} index
 * @param {string} address
 */
const variable = (index, address) => ({
  index, name: address, address, station: 1, type: 'word', format: 'unsigned', elements: 1, writable: false,
  isBit: false, low: null, high: null,
});

/**
 * @param {Partial<Snapshot>} [more]
 * @returns {Snapshot}
 */
const snapshot = (more = {}) => ({
  kind: 'snapshot', epoch: 'one', sequence: 1, now: 1000, generation: 1, status: STATUS, events: [],
  variables: [variable(0, 'A'), variable(1, 'B')], values: [[0, '5', 5, 'good', '', 900, 900]], ...more,
});

/**
 * @param {Partial<Changes>} [more]
 * @returns {Changes}
 */
const changes = (more = {}) => ({
  kind: 'changes', epoch: 'one', sequence: 2, now: 1100, generation: 1, status: STATUS, values: [], events: [], ...more,
});

/**
 * @param {number} id
 * @returns {PageEvent}
 */
const event = (id) => ({ id, at: id, kind: 'timeout', text: '', variable: null, address: null, bad: true });

/** A store whose pictures are drawn by hand. */
function storeWithPictures() {
  /** @type {(() => void)[]} */
  const pictures = [];
  const store = new Store((draw) => pictures.push(draw));
  return { store, draw: () => pictures.splice(0).forEach((picture) => picture()) };
}

test('a variable without a value was never read', () => {
  const { store } = storeWithPictures();
  store.take(snapshot());
  assert.equal(store.values[0][3], 'good');
  assert.deepEqual(store.values[1].slice(1, 4), ['–', null, 'never']);
});

test('changes replace the rows that they have', () => {
  const { store } = storeWithPictures();
  store.take(snapshot());
  assert.equal(store.take(changes({ values: [[1, '7', 7, 'good', '', 1050, 1050]] })), true);
  assert.equal(store.values[0][1], '5');
  assert.equal(store.values[1][1], '7');
  assert.equal(store.sequence, 2);
});

test('changes of another start or another list ask for a snapshot', () => {
  const { store } = storeWithPictures();
  store.take(snapshot());
  assert.equal(store.take(changes({ epoch: 'two' })), false);
  assert.equal(store.take(changes({ generation: 2 })), false);
  assert.equal(store.sequence, 1);
});

test('an event that came twice stands once', () => {
  const { store } = storeWithPictures();
  store.take(snapshot({ events: [event(1), event(2)] }));
  store.take(changes({ events: [event(2), event(3)] }));
  assert.deepEqual(store.events.map(({ id }) => id), [1, 2, 3]);
});

test('the events of another start replace those of the old one', () => {
  const { store } = storeWithPictures();
  store.take(snapshot({ events: [event(8)] }));
  store.take(snapshot({ epoch: 'two', events: [event(1)] }));
  assert.deepEqual(store.events.map(({ id }) => id), [1]);
});

test('events are bounded, oldest out first', () => {
  const { store } = storeWithPictures();
  store.take(snapshot({ events: Array.from({ length: KEPT_EVENTS + 5 }, (_, id) => event(id)) }));
  assert.equal(store.events.length, KEPT_EVENTS);
  assert.equal(store.events[0].id, 5);
});

test('many messages are one call for each picture', () => {
  const { store, draw } = storeWithPictures();
  let calls = 0;
  store.on(['values', 'status'], () => { calls += 1; });
  store.take(snapshot());
  store.take(changes());
  store.take(changes());
  draw();
  assert.equal(calls, 1);
  store.take(changes());
  draw();
  assert.equal(calls, 2);
});

test('a tap hears every row at once', () => {
  const { store } = storeWithPictures();
  /** @type {string[]} */
  const heard = [];
  store.tap((rows) => heard.push(...rows.map((row) => row[1])));
  store.take(snapshot());
  store.take(changes({ values: [[0, '6', 6, 'good', '', 1050, 1050]] }));
  assert.deepEqual(heard, ['5', '6']);
});

test('pins come and go, up to a limit', () => {
  const { store } = storeWithPictures();
  assert.equal(store.togglePin('A'), true);
  assert.equal(store.isPinned('A'), true);
  store.togglePin('A');
  assert.deepEqual(store.pins, []);
  store.setPins(Array.from({ length: MOST_PINS }, (_, index) => `P${index}`));
  assert.equal(store.togglePin('one more'), false);
});
