// The keys of the trends while they have the focus.

/** @typedef {import('./trends_view.js').TrendsView} TrendsView */

/** @type {Record<string, (trends: TrendsView) => void>} */
const KEYS = {
  ArrowLeft: (trends) => trends.pan(-0.1),
  ArrowRight: (trends) => trends.pan(0.1),
  PageUp: (trends) => trends.pan(-1),
  PageDown: (trends) => trends.pan(1),
  '+': (trends) => trends.zoom(0.5),
  '-': (trends) => trends.zoom(2),
  Home: (trends) => trends.backToLive(),
  a: (trends) => trends.takeCursor('a'),
  b: (trends) => trends.takeCursor('b'),
  x: (trends) => trends.clearCursors(),
};

/** @type {Record<string, (trends: TrendsView) => void>} */
const SHIFTED = {
  ArrowLeft: (trends) => trends.moveCursor(-0.01),
  ArrowRight: (trends) => trends.moveCursor(0.01),
};

export const TREND_KEYS = [
  ['← →', 'trends: pan (Page Up and Page Down: by a whole window)'],
  ['+ -', 'trends: zoom; the wheel zooms too, with Shift it pans; dragging picks a window'],
  ['Home', 'trends: back to live; so does a double click'],
  ['a b', 'trends: take cursor A or B; a click puts it, Shift with arrows moves it'],
  ['x', 'trends: take the cursors away'],
];

/**
 * @param {TrendsView} trends
 * @param {KeyboardEvent} event
 */
export function trendKeys(trends, event) {
  if (event.ctrlKey || event.metaKey || event.altKey || event.target instanceof HTMLSelectElement) return;
  const act = event.shiftKey ? SHIFTED[event.key] ?? KEYS[event.key] : KEYS[event.key];
  if (!act) return;
  event.preventDefault();
  act(trends);
}
