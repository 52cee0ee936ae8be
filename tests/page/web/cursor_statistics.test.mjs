// What lies between two cursors.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { between } from '../../../tools/page/web/app/trends/cursor_statistics.js';

/**
 * @param {[at: number, min: number, max?: number, last?: number][]} points
 * @param {import('../../../tools/page/web/app/feed/buckets.js').Gap[]} [gaps]
 */
function series(points, gaps = []) {
  return {
    from: 0, to: 100, gaps,
    t: points.map(([at]) => at), min: points.map((point) => point[1]), max: points.map((point) => point[2] ?? point[1]),
    last: points.map((point) => point[3] ?? point[1]),
  };
}

test('change, least, greatest, and a mean in which each value counts as long as it held', () => {
  const sum = between(series([[0, 10], [30, 20], [40, 0]]), 10, 50);
  assert.equal(sum.change, -10);
  assert.equal(sum.min, 0);
  assert.equal(sum.max, 20);
  assert.equal(sum.mean, (20 * 10 + 10 * 20 + 10 * 0) / 40);
  assert.equal(sum.gapMs, 0);
});

test('the order of the cursors does not matter', () => {
  const one = series([[0, 10], [30, 20]]);
  assert.deepEqual(between(one, 50, 10), between(one, 10, 50));
});

test('a gap counts for nothing', () => {
  const sum = between(series([[0, 10], [60, 20]], [[20, 60, 'link down']]), 0, 80);
  assert.equal(sum.mean, (10 * 20 + 20 * 20) / 40);
  assert.equal(sum.gapMs, 40);
});

test('a cursor in a gap has no value to compare', () => {
  const sum = between(series([[0, 10], [60, 20]], [[20, 60, 'link down']]), 30, 80);
  assert.equal(sum.change, null);
  assert.equal(sum.min, 20);
});

test('all in a gap is nothing at all', () => {
  const sum = between(series([[0, 10]], [[20, 90, 'link down']]), 30, 80);
  assert.deepEqual([sum.change, sum.min, sum.max, sum.mean], [null, null, null, null]);
  assert.equal(sum.gapMs, 50);
});

test('sums of several readings bring their least and greatest, and make the mean a rough one', () => {
  const sum = between(series([[0, 10], [50, 1, 30, 12]]), 0, 80);
  assert.equal(sum.min, 1);
  assert.equal(sum.max, 30);
  assert.equal(sum.rough, true);
});
