// Rows of a trend's CSV, the token, the filter of the values.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { seriesOf } from '../../../tools/page/web/app/feed/buckets.js';
import { seriesRows } from '../../../tools/page/web/app/trends/trend_csv.js';
import { tokenOf } from '../../../tools/page/web/app/link/token.js';
import { listed } from '../../../tools/page/web/app/values/filter.js';

/**
 * @param {Partial<import('../../../tools/page/web/app/feed/messages.js').History>} more
 * @returns {import('../../../tools/page/web/app/feed/messages.js').History}
 */
const history = (more) => ({
  address: 'A', from: 0, to: 5000, oldest: 0, source: 'memory', isBit: false, t: [], min: [], max: [], last: [],
  gaps: [], events: [], ...more,
});

/**
 * @param {string} name
 * @param {string} address
 * @param {string} type
 */
const variable = (name, address, type) => ({
  index: 0, name, address, type, station: 1, format: 'unsigned', elements: 1, writable: false, isBit: type === 'bit',
  low: null, high: null,
});

const TEMPERATURE = { address: 'Main.Temp', name: 'Temperature' };

test('a value that changes, is lost and comes back has a row for each, with the reason', () => {
  const series = seriesOf(history({ t: [1000, 4000], min: [1, 3], max: [1, 4], last: [1, 4],
    gaps: [[2000, 3000, 'stale: link down']] }));
  assert.deepEqual(seriesRows(series, TEMPERATURE, { from: 1000, to: 5000 }), [
    ['1970-01-01T00:00:01.000Z', 'Main.Temp', 'Temperature', 1, 1, 1, 'good'],
    ['1970-01-01T00:00:02.000Z', 'Main.Temp', 'Temperature', null, null, null, 'stale: link down'],
    ['1970-01-01T00:00:03.000Z', 'Main.Temp', 'Temperature', 1, 1, 1, 'good'],
    ['1970-01-01T00:00:04.000Z', 'Main.Temp', 'Temperature', 3, 4, 4, 'good'],
  ]);
});

test('the first row has what held when the span began, and nothing outside of it is told', () => {
  const series = seriesOf(history({ t: [1000, 3000, 9000], min: [1, 3, 4], max: [1, 3, 4], last: [1, 3, 4] }));
  assert.deepEqual(seriesRows(series, TEMPERATURE, { from: 2000, to: 5000 }).map(([at, , , , , last]) => [at, last]),
    [['1970-01-01T00:00:02.000Z', 1], ['1970-01-01T00:00:03.000Z', 3]]);
});

test('before the first reading nothing is known', () => {
  const series = seriesOf(history({ t: [3000], min: [3], max: [3], last: [3] }));
  assert.deepEqual(seriesRows(series, TEMPERATURE, { from: 2000, to: 5000 })[0].slice(3),
    [null, null, null, 'not known']);
});

test('a token is read from the fragment and from nothing else', () => {
  assert.equal(tokenOf('#token=0123456789abcdef0123456789abcdef'), '0123456789abcdef0123456789abcdef');
  assert.equal(tokenOf('#values'), null);
  assert.equal(tokenOf('#token=<script>'), null);
});

test('a filter wants every word, in name, address, type or quality', () => {
  const variables = [variable('Temperature', 'Main.Temp', 'real'), variable('Run', 'Main.Run', 'bit')];
  /** @type {import('../../../tools/page/web/app/feed/messages.js').ValueRow[]} */
  const values = [[0, '1', 1, 'good', '', 1, 1], [1, '1', 1, 'stale', '', 1, 1]];
  assert.deepEqual(listed(variables, values, '', false, true), [0, 1]);
  assert.deepEqual(listed(variables, values, 'main TEMP', false, true), [0]);
  assert.deepEqual(listed(variables, values, 'stale', false, true), [1]);
  assert.deepEqual(listed(variables, values, '', true, true), [1]);
  // The page has lost the program: each is unknown, and none is good.
  assert.deepEqual(listed(variables, values, '', true, false), [0, 1]);
  assert.deepEqual(listed(variables, values, 'good', false, false), []);
  assert.deepEqual(listed(variables, values, 'unknown temp', false, false), [0]);
});
