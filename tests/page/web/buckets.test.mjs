// The course of a value: merging what the program said with what arrived since, gaps, the value at a time.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import {
  NOTHING_KEPT, NOT_RECORDED, emptySeries, isUnknown, merged, openGap, put, seriesOf, trim, valueAt,
} from '../../../tools/page/web/app/feed/buckets.js';

/**
 * A history as the program sends it, one reading in each place.
 * @param {number} from
 * @param {number} to
 * @param {[at: number, value: number][]} readings
 * @param {[from: number, to: number|null, reason: string][]} [gaps]
 * @param {number|null} [oldest]
 * @returns {import('../../../tools/page/web/app/feed/messages.js').History}
 */
function history(from, to, readings, gaps = [], oldest = 0) {
  const values = readings.map(([, value]) => value);
  return {
    address: 'Main.Temp', from, to, oldest, source: 'memory', isBit: false, events: [], gaps,
    t: readings.map(([at]) => at), min: values, max: values, last: values,
  };
}

test('a newer answer replaces what was known of its time', () => {
  const base = seriesOf(history(0, 100, [[10, 1], [60, 2], [90, 3]]));
  const more = seriesOf(history(50, 200, [[55, 7], [150, 8]]));
  const both = merged(base, more);
  assert.deepEqual(both.t, [10, 55, 150]);
  assert.deepEqual(both.last, [1, 7, 8]);
  assert.equal(both.from, 0);
  assert.equal(both.to, 200);
});

test('the point before its time that an answer brings along stands once', () => {
  const base = seriesOf(history(0, 100, [[10, 1], [40, 2]]));
  const more = seriesOf(history(80, 200, [[40, 2], [150, 3]]));
  assert.deepEqual(merged(base, more).t, [10, 40, 150]);
});

test('… also when the page has a newer reading of the same value', () => {
  const base = seriesOf(history(0, 100, [[10, 1], [45, 2]]));
  const more = seriesOf(history(80, 200, [[40, 2], [150, 3]]));
  assert.deepEqual(merged(base, more).t, [10, 45, 150]);
});

test('a gap that both answers know is one gap', () => {
  const base = seriesOf(history(0, 100, [[10, 1]], [[80, 100, 'link down']]));
  const more = seriesOf(history(100, 200, [], [[100, 150, 'link down']]));
  assert.deepEqual(merged(base, more).gaps, [[80, 150, 'link down']]);
});

test('a gap that began before the time of the newer answer stands once', () => {
  const base = seriesOf(history(0, 100, [[10, 1]], [[80, 100, 'link down']]));
  const more = seriesOf(history(90, 200, [[10, 1]], [[80, 150, 'link down']]));
  assert.deepEqual(merged(base, more).gaps, [[80, 150, 'link down']]);
});

test('a gap that goes on is cut where the newer answer begins', () => {
  const base = emptySeries(0);
  put(base, 80, null, 'link down');
  const more = seriesOf(history(100, 200, [[120, 5]]));
  assert.deepEqual(merged(base, more).gaps, [[80, 100, 'link down']]);
});

test('what is older than what is kept is a gap', () => {
  assert.deepEqual(seriesOf(history(0, 100, [[60, 1]], [], 50)).gaps, [[0, 50, NOTHING_KEPT]]);
  assert.deepEqual(seriesOf(history(0, 100, [], [], null)).gaps, [[0, 100, NOTHING_KEPT]]);
});

test('of a time that was not kept or not recorded nobody knows whether the value was good', () => {
  assert.ok(isUnknown([0, 50, NOTHING_KEPT]));
  assert.ok(isUnknown([0, 50, NOT_RECORDED]));
  assert.ok(!isUnknown([0, 50, 'link down']));
});

test('a gap that reaches the end of an answer lasts, until a newer one says that it is over', () => {
  const base = seriesOf(history(0, 100, [[10, 1]], [[80, 100, 'link down']]));
  assert.equal(valueAt(base, 120), null);
  assert.equal(valueAt(merged(base, seriesOf(history(90, 200, [[10, 1]], [[90, 110, 'link down']]))), 120), 1);
});

test('a time for which there is a reason needs no further one', () => {
  const gaps = seriesOf(history(0, 100, [[60, 1]], [[0, 50, 'nothing was recorded']], 50)).gaps;
  assert.deepEqual(gaps, [[0, 50, 'nothing was recorded']]);
});

test('a value that is not good opens a gap, the next good one ends it', () => {
  const series = emptySeries(0);
  put(series, 10, 1, '');
  put(series, 20, null, 'stale');
  assert.deepEqual(openGap(series), [20, Infinity, 'stale']);
  put(series, 30, 2, '');
  assert.deepEqual(series.gaps, [[20, 30, 'stale']]);
  assert.deepEqual(series.t, [10, 30]);
});

test('a gap with another reason is another gap', () => {
  const series = emptySeries(0);
  put(series, 20, null, 'stale');
  put(series, 30, null, 'bad');
  assert.deepEqual(series.gaps, [[20, 30, 'stale'], [30, Infinity, 'bad']]);
});

test('a reading older than the newest is not drawn backwards', () => {
  const series = emptySeries(0);
  put(series, 20, 1, '');
  put(series, 10, 2, '');
  assert.deepEqual(series.t, [20]);
});

test('a value that was read again and is the same takes no room', () => {
  const series = emptySeries(0);
  put(series, 10, 1, '');
  put(series, 20, 1, '');
  assert.deepEqual(series.t, [10]);
  assert.equal(series.to, 20);
});

test('trimming keeps the point whose value still held', () => {
  const series = seriesOf(history(0, 100, [[10, 1], [40, 2], [90, 3]]));
  trim(series, 60);
  assert.deepEqual(series.t, [40, 90]);
  assert.equal(valueAt(series, 60), 2);
});

test('a value holds until the next one, not in a gap, and again when the gap ends', () => {
  const series = seriesOf(history(0, 100, [[10, 1], [80, 3]], [[50, 60, 'link down']]));
  assert.equal(valueAt(series, 5), null);
  assert.equal(valueAt(series, 49), 1);
  assert.equal(valueAt(series, 55), null);
  assert.equal(valueAt(series, 70), 1);
  assert.equal(valueAt(series, 80), 3);
});
