// A series as the chart takes it: no line crosses a gap.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { plotPoints } from '../../../tools/page/web/app/trends/plot_points.js';

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

test('the last value holds until now', () => {
  assert.deepEqual(plotPoints(series([[10, 1], [20, 2]]), 50), [[10, 20, 50], [1, 2, 2]]);
});

test('a gap ends the line where it begins', () => {
  const [x, y] = plotPoints(series([[10, 1], [60, 2]], [[30, 60, 'link down']]), 80);
  assert.deepEqual(x, [10, 30, 30, 60, 80]);
  assert.deepEqual(y, [1, 1, null, 2, 2]);
});

test('nothing holds through a gap that lasts', () => {
  const [x, y] = plotPoints(series([[10, 1]], [[30, Infinity, 'link down']]), 80);
  assert.deepEqual(x, [10, 30, 30]);
  assert.deepEqual(y, [1, 1, null]);
});

test('a point inside a gap is drawn when the gap ends', () => {
  const [x, y] = plotPoints(series([[10, 1], [40, 9]], [[30, 60, 'link down']]), 80);
  assert.deepEqual(x, [10, 30, 30, 60, 80]);
  assert.deepEqual(y, [1, 1, null, 9, 9]);
});

test('a value that is good again and did not change goes on where the gap ends', () => {
  const [x, y] = plotPoints(series([[10, 1]], [[30, 60, 'link down']]), 80);
  assert.deepEqual(x, [10, 30, 30, 60, 80]);
  assert.deepEqual(y, [1, 1, null, 1, 1]);
});

test('of two gaps one after the other nothing is drawn between', () => {
  const [x, y] = plotPoints(series([[10, 1]], [[30, 60, 'stale'], [60, Infinity, 'bad']]), 80);
  assert.deepEqual(x, [10, 30, 30]);
  assert.deepEqual(y, [1, 1, null]);
});

test('a sum of several readings shows its least and its greatest', () => {
  assert.deepEqual(plotPoints(series([[10, 1, 5, 3]]), 10), [[10, 10, 10], [1, 5, 3]]);
});

test('a series that is a gap from its begin has no line', () => {
  assert.deepEqual(plotPoints(series([], [[0, 100, 'never']]), 100), [[], []]);
});
