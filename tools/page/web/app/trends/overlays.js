// What is drawn over and under a lane's line: gaps as hatched bands, events as marks, the two cursors.
import { isUnknown } from '../feed/buckets.js';

/**
 * @typedef {import('uplot')} Chart
 * @typedef {import('../feed/buckets.js').Series} Series
 * @typedef {import('../feed/messages.js').PageEvent} PageEvent
 * @typedef {import('../view/colours.js').Colours} Colours
 * @typedef {import('./cursors.js').Cursors} Cursors
 */

/** @type {Set<string>} events that get a mark; what is bad gets one too */
const MARKED = new Set(['connected', 'connectionLost', 'connectFailed', 'closed', 'write', 'planChanged', 'back']);

/** @type {Set<string>} … and a line down through the lane */
const LINED = new Set(['connected', 'connectionLost', 'write', 'planChanged']);

/**
 * The events to mark in the lane of a variable.
 * @param {PageEvent[]} events
 * @param {string} address
 */
export function markedEvents(events, address) {
  return events.filter((event) => (event.bad || MARKED.has(event.kind))
    && (event.address === null || event.address === address));
}

/**
 * Calls back with the plotting area as clip, in canvas pixels.
 * @param {Chart} chart
 * @param {(context: CanvasRenderingContext2D, x: (at: number) => number) => void} draw
 */
function clipped(chart, draw) {
  const { ctx, bbox } = chart;
  ctx.save();
  ctx.beginPath();
  ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
  ctx.clip();
  draw(ctx, (at) => chart.valToPos(at, 'x', true));
  ctx.restore();
}

/**
 * @param {Chart} chart
 * @param {Series} series
 * @param {Colours} colours
 */
export function drawGaps(chart, series, colours) {
  const from = chart.scales.x.min ?? 0;
  const to = chart.scales.x.max ?? 0;
  clipped(chart, (context, x) => {
    const { top, height, left, width } = chart.bbox;
    for (const gap of series.gaps) {
      if (gap[1] < from || gap[0] > to) continue;
      const begin = Math.max(left, x(gap[0]));
      const end = Math.min(left + width, gap[1] === Infinity ? x(to) : x(gap[1]));
      if (isUnknown(gap)) {
        context.fillStyle = colours.of('nothing');
        context.fillRect(begin, top, end - begin, height);
      } else {
        hatch(context, begin, top, Math.max(1, end - begin), height, colours);
      }
    }
  });
}

/**
 * @param {CanvasRenderingContext2D} context
 * @param {number} left
 * @param {number} top
 * @param {number} width
 * @param {number} height
 * @param {Colours} colours
 */
function hatch(context, left, top, width, height, colours) {
  context.fillStyle = colours.of('gap');
  context.fillRect(left, top, width, height);
  context.save();
  context.beginPath();
  context.rect(left, top, width, height);
  context.clip();
  context.strokeStyle = colours.of('gap-edge');
  context.lineWidth = 1;
  context.beginPath();
  const step = 8 * devicePixelRatio;
  for (let at = Math.floor((left - height) / step) * step; at < left + width; at += step) {
    context.moveTo(at, top + height);
    context.lineTo(at + height, top);
  }
  context.stroke();
  context.restore();
}

/**
 * @param {Chart} chart
 * @param {PageEvent[]} events
 * @param {Colours} colours
 */
export function drawMarks(chart, events, colours) {
  const from = chart.scales.x.min ?? 0;
  const to = chart.scales.x.max ?? 0;
  clipped(chart, (context, x) => {
    const { top, height } = chart.bbox;
    const size = 4 * devicePixelRatio;
    for (const event of events) {
      if (event.at < from || event.at > to) continue;
      const at = Math.round(x(event.at));
      context.fillStyle = colours.of(event.bad ? 'mark-bad' : 'mark');
      if (LINED.has(event.kind)) context.fillRect(at, top, 1, height);
      context.beginPath();
      context.moveTo(at - size, top);
      context.lineTo(at + size, top);
      context.lineTo(at, top + size * 1.5);
      context.fill();
    }
  });
}

/**
 * @param {Chart} chart
 * @param {Cursors} cursors
 * @param {Colours} colours
 */
export function drawCursors(chart, cursors, colours) {
  clipped(chart, (context, x) => {
    const { top, height } = chart.bbox;
    context.textAlign = 'left';
    context.textBaseline = 'alphabetic';
    context.font = `bold ${12 * devicePixelRatio}px sans-serif`;
    for (const name of /** @type {const} */ (['a', 'b'])) {
      const at = cursors[name];
      if (at === null) continue;
      context.fillStyle = colours.of(`cursor-${name}`);
      context.fillRect(Math.round(x(at)), top, Math.ceil(devicePixelRatio), height);
      context.fillText(name.toUpperCase(), x(at) + 4 * devicePixelRatio, top + height - 4 * devicePixelRatio);
    }
  });
}
