// How a lane's chart looks: axes, scale, a line that holds each value until the next one.
import uPlot from '/vendor/uPlot.esm.js';
import { clockTime } from '../text/ages.js';
import { number } from '../text/numbers.js';

/** A movement with the button held that is longer than this picks a window. */
export const DRAG_PIXELS = 5;

const AXIS_WIDTH = 72;
const TIME_AXIS_HEIGHT = 26;
const FONT = '12px system-ui, sans-serif';

/** @param {number} value */
function tick(value) {
  const text = number(value);
  return text.length <= 9 ? text : value.toExponential(2);
}

/**
 * @param {boolean} bit
 * @param {number|null} min
 * @param {number|null} max
 * @returns {[number, number]}
 */
function range(bit, min, max) {
  if (bit) return [-0.15, 1.15];
  if (min === null || max === null) return [0, 1];
  const room = max > min ? (max - min) * 0.08 : Math.abs(max) * 0.05 || 1;
  return [min - room, max + room];
}

/**
 * @param {boolean} bit
 * @param {import('../view/colours.js').Colours} colours
 * @param {{under: (chart: uPlot) => void, over: (chart: uPlot) => void}} draw what is drawn under and over the line
 * @returns {import('uplot').Options}
 */
export function chartOptions(bit, colours, draw) {
  const axis = () => colours.of('axis');
  const line = { stroke: () => colours.of('grid'), width: 1 };
  return {
    width: 300,
    height: 80,
    ms: 1,
    legend: { show: false },
    padding: [6, 30, bit ? 4 : 6, 0],
    cursor: { y: false, points: { show: false }, drag: { x: true, y: false, setScale: false, dist: DRAG_PIXELS },
      sync: { key: 'trends', scales: ['x', null] } },
    scales: { x: { time: true, auto: false }, y: { range: (_, min, max) => range(bit, min, max) } },
    axes: [
      { font: FONT, stroke: axis, grid: line, ticks: { ...line, size: 4 }, gap: 2, size: TIME_AXIS_HEIGHT, space: 90,
        values: (_, splits) => splits.map((at) => clockTime(at, splits[1] - splits[0] < 1000)) },
      { font: FONT, stroke: axis, grid: line, ticks: { ...line, size: 4 }, gap: 3, size: AXIS_WIDTH, space: 15,
        values: (_, splits) => splits.map(tick), ...(bit ? { splits: () => [0, 1] } : {}) },
    ],
    series: [{}, { stroke: () => colours.of('line'), width: 1.5, points: { show: false },
      paths: /** @type {NonNullable<typeof uPlot.paths.stepped>} */ (uPlot.paths.stepped)({ align: 1 }) }],
    hooks: { drawClear: [draw.under], draw: [draw.over] },
  };
}
