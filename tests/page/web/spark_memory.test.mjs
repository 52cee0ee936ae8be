// The last minute of a value, second by second.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { SECONDS, SparkMemory } from '../../../tools/page/web/app/feed/spark_memory.js';

/**
 * @param {SparkMemory} memory
 * @param {number} index
 * @param {number} now
 */
function seconds(memory, index, now) {
  /** @type {([number, number]|null)[]} */
  const found = [];
  memory.read(index, now, (place, min, max) => { found[place] = Number.isNaN(min) ? null : [min, max]; });
  return found;
}

test('a second has its least and its greatest value', () => {
  const memory = new SparkMemory();
  memory.reset(2, 0);
  memory.put(1, 5, 100);
  memory.put(1, 9, 200);
  memory.put(1, 7, 300);
  assert.deepEqual(seconds(memory, 1, 500)[SECONDS - 1], [5, 9]);
  assert.deepEqual(seconds(memory, 0, 500)[SECONDS - 1], null);
});

test('a value holds until the next one', () => {
  const memory = new SparkMemory();
  memory.reset(1, 0);
  memory.put(0, 5, 100);
  assert.deepEqual(seconds(memory, 0, 3100).slice(-4), [[5, 5], [5, 5], [5, 5], [5, 5]]);
});

test('what is not good leaves nothing', () => {
  const memory = new SparkMemory();
  memory.reset(1, 0);
  memory.put(0, 5, 100);
  memory.put(0, NaN, 1100);
  assert.deepEqual(seconds(memory, 0, 3100).slice(-4), [[5, 5], [5, 5], null, null]);
});

test('nothing holds while the program is lost', () => {
  const memory = new SparkMemory();
  memory.reset(1, 0);
  memory.put(0, 5, 100);
  memory.lose();
  assert.deepEqual(seconds(memory, 0, 2100).slice(-2), [null, null]);
});

test('what is older than a minute is gone', () => {
  const memory = new SparkMemory();
  memory.reset(1, 0);
  memory.put(0, 5, 100);
  memory.put(0, 1, 1100);
  const all = seconds(memory, 0, 200000);
  assert.deepEqual(all, Array.from({ length: SECONDS }, () => [1, 1]));
});

test('the minute before the page came is filled in, once, under what is there already', () => {
  const memory = new SparkMemory();
  memory.reset(1, 100000);
  memory.put(0, 7, 100500);
  /** @type {import('../../../tools/page/web/app/feed/buckets.js').Series} */
  const series = {
    from: 40000, to: 100400, gaps: [[98000, 99000, 'link down']],
    t: [40000, 97500, 99000], min: [1, 2, 3], max: [1, 4, 3], last: [1, 4, 3],
  };
  assert.equal(memory.lacksPast(0), true);
  memory.fillPast(0, series);
  assert.equal(memory.lacksPast(0), false);
  assert.deepEqual(seconds(memory, 0, 100600).slice(-5), [[1, 1], [1, 4], null, [3, 3], [7, 7]]);
});
