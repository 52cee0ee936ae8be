// Rows of a trend's CSV, the token, the filter of the values.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { historyRows } from '../../../tools/page/web/app/trends/trend_csv.js';
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

test('readings and gaps stand in order of time, with the reason', () => {
  const temperature = history({
    address: 'Main.Temp', t: [1000, 3000], min: [1, 3], max: [1, 4], last: [1, 4],
    gaps: [[2000, 3000, 'stale: link down']],
  });
  assert.deepEqual(historyRows(temperature, 'Temperature', { from: 0, to: 5000 }), [
    ['1970-01-01T00:00:01.000Z', 'Main.Temp', 'Temperature', 1, 1, 1, 'good'],
    ['1970-01-01T00:00:02.000Z', 'Main.Temp', 'Temperature', null, null, null, 'stale: link down'],
    ['1970-01-01T00:00:03.000Z', 'Main.Temp', 'Temperature', 3, 4, 4, 'good'],
  ]);
});

test('what lies outside of the span is left out', () => {
  const one = history({ t: [1000, 3000], min: [1, 3], max: [1, 3], last: [1, 3], gaps: [[4000, 5000, 'x']] });
  assert.equal(historyRows(one, 'A', { from: 2000, to: 3500 }).length, 1);
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
  assert.deepEqual(listed(variables, values, '', false), [0, 1]);
  assert.deepEqual(listed(variables, values, 'main TEMP', false), [0]);
  assert.deepEqual(listed(variables, values, 'stale', false), [1]);
  assert.deepEqual(listed(variables, values, '', true), [1]);
});
