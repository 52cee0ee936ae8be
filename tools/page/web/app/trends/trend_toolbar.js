// The buttons of the trends, and the line under them that says which time is seen.
import { clockTime, dayTime, length } from '../text/ages.js';
import { element, setAttribute, setText } from '../view/dom.js';

/**
 * @typedef {import('./trends_view.js').TrendsView} TrendsView
 * @typedef {import('./time_window.js').Span} Span
 */

/** @type {Record<string, (trends: TrendsView) => void>} */
const BUTTONS = {
  freeze: (trends) => trends.toggleFreeze(),
  'back-to-live': (trends) => trends.backToLive(),
  'pan-back': (trends) => trends.pan(-0.5),
  'pan-on': (trends) => trends.pan(0.5),
  'zoom-in': (trends) => trends.zoom(0.5),
  'zoom-out': (trends) => trends.zoom(2),
  'cursor-a': (trends) => trends.takeCursor('a'),
  'cursor-b': (trends) => trends.takeCursor('b'),
  'cursors-off': (trends) => trends.clearCursors(),
  csv: (trends) => trends.saveCsv(),
};

/** @param {TrendsView} trends */
export function trendToolbar(trends) {
  for (const [id, act] of Object.entries(BUTTONS)) {
    element(id, HTMLButtonElement).addEventListener('click', () => act(trends));
  }
  const span = element('span', HTMLSelectElement);
  span.addEventListener('change', () => trends.setSpan(Number(span.value)));
}

/**
 * @param {TrendsView} trends
 * @param {Span} window
 * @param {number} now
 * @param {{lost: boolean, problem: string}} trouble whether the program is lost; why the past cannot be shown, or empty
 */
export function drawTrendState({ window: { live }, cursors }, { from, to }, now, { lost, problem }) {
  setAttribute(element('trends', HTMLElement), 'data-mode', live ? 'live' : 'held');
  setAttribute(element('freeze', HTMLElement), 'aria-pressed', String(!live));
  for (const name of /** @type {const} */ (['a', 'b'])) {
    setAttribute(element(`cursor-${name}`, HTMLElement), 'aria-pressed', String(cursors.active === name));
  }
  const { both } = cursors;
  const arriving = lost ? 'nothing arrives: the page has lost the program' : 'data go on arriving';
  const lead = lost ? `Stopped at ${clockTime(to)}: nothing arrives; ` : 'Live: ';
  const seen = live ? `${lead}the last ${length(to - from)}`
    : `Held: ${dayTime(from, now)} – ${dayTime(to, now)} (${length(to - from)}); ${arriving}`;
  const marks = both === null ? ''
    : `Δt ${length(both[1] - both[0])} (${clockTime(both[0], true)} – ${clockTime(both[1], true)}) · `;
  const trouble = problem === '' ? '' : ` · the past cannot be shown: ${problem}`;
  setText(element('trend-state', HTMLElement), marks + seen + trouble);
}
