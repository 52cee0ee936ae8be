// The time that the trends show: live, frozen, zoomed, panned.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { SHORTEST_MS, TimeWindow } from '../../../tools/page/web/app/trends/time_window.js';

test('live follows the time', () => {
  const window = new TimeWindow();
  assert.deepEqual(window.at(100000), { from: 40000, to: 100000 });
  assert.deepEqual(window.at(101000), { from: 41000, to: 101000 });
});

test('frozen stays while time goes on, and comes back to live', () => {
  const window = new TimeWindow();
  window.freeze(100000);
  assert.deepEqual(window.at(200000), { from: 40000, to: 100000 });
  window.backToLive();
  assert.deepEqual(window.at(200000), { from: 140000, to: 200000 });
});

test('dragging in either direction picks the same window', () => {
  const window = new TimeWindow();
  window.zoomTo(5000, 3000);
  assert.deepEqual(window.at(100000), { from: 3000, to: 5000 });
});

test('a window never becomes shorter than the shortest', () => {
  const window = new TimeWindow();
  window.zoomTo(5000, 5001);
  assert.deepEqual(window.at(100000), { from: 5000, to: 5000 + SHORTEST_MS });
});

test('zooming leaves the time under the pointer where it is', () => {
  const window = new TimeWindow();
  window.zoomBy(0.5, 60000, 100000);
  assert.deepEqual(window.at(0), { from: 50000, to: 80000 });
});

test('panning back holds the window, panning on ends at now', () => {
  const window = new TimeWindow();
  window.pan(-0.5, 100000);
  assert.deepEqual(window.at(100000), { from: 10000, to: 70000 });
  window.pan(5, 100000);
  assert.deepEqual(window.at(100000), { from: 40000, to: 100000 });
});

test('a live window does not pan into the future', () => {
  const window = new TimeWindow();
  window.pan(0.5, 100000);
  assert.equal(window.live, true);
});
