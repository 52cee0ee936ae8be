// Rows of a trend's CSV, the token, the filter of the values.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { seriesOf } from '../../../tools/page/web/app/feed/buckets.js';
import { trendRows } from '../../../tools/page/web/app/trends/trend_csv.js';
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

test('a row for each time at which a value changed, with the state of every one of them', () => {
  const temperature = seriesOf(history({ t: [1000, 3000], min: [1, 3], max: [1, 3], last: [1, 3],
    gaps: [[2000, 3000, 'stale: link down']] }));
  const speed = seriesOf(history({ t: [1500], min: [7], max: [7], last: [7] }));
  const courses = [{ address: 'Main.Temp', series: temperature }, { address: 'Line2.Speed', series: speed }];
  assert.deepEqual(trendRows(courses, { from: 1000, to: 5000 }), [
    ['time', 'Main.Temp', 'Main.Temp state', 'Line2.Speed', 'Line2.Speed state'],
    ['1970-01-01T00:00:01.000Z', 1, 'good', null, 'not known'],
    ['1970-01-01T00:00:01.500Z', 1, 'good', 7, 'good'],
    ['1970-01-01T00:00:02.000Z', null, 'stale: link down', 7, 'good'],
    ['1970-01-01T00:00:03.000Z', 3, 'good', 7, 'good'],
  ]);
});

test('the first row has what held when the span began, and nothing outside of it is told', () => {
  const series = seriesOf(history({ t: [1000, 3000, 9000], min: [1, 3, 4], max: [1, 3, 4], last: [1, 3, 4] }));
  assert.deepEqual(trendRows([{ address: 'A', series }], { from: 2000, to: 5000 }).slice(1), [
    ['1970-01-01T00:00:02.000Z', 1, 'good'],
    ['1970-01-01T00:00:03.000Z', 3, 'good'],
  ]);
});

test('readings that were summed up bring their least and greatest', () => {
  const series = seriesOf(history({ t: [1000, 3000], min: [1, 2], max: [1, 9], last: [1, 3] }));
  assert.deepEqual(trendRows([{ address: 'A', series }], { from: 1000, to: 5000 }), [
    ['time', 'A', 'A least', 'A greatest', 'A state'],
    ['1970-01-01T00:00:01.000Z', 1, 1, 1, 'good'],
    ['1970-01-01T00:00:03.000Z', 3, 2, 9, 'good'],
  ]);
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
