// One pinned variable: its name and value, what is under the pointer or between the cursors, and its chart with a
// scale of its own. A bit is drawn between 0 and 1.
import uPlot from '/vendor/uPlot.esm.js';
import { gapAt, valueAt } from '../feed/buckets.js';
import { clockTime, length } from '../text/ages.js';
import { number } from '../text/numbers.js';
import { look, valueText } from '../text/qualities.js';
import { make, setAttribute, setText } from '../view/dom.js';
import { between } from './cursor_statistics.js';
import { DRAG_PIXELS, chartOptions } from './lane_chart.js';
import { drawCursors, drawGaps, drawMarks } from './overlays.js';
import { plotPoints } from './plot_points.js';

/**
 * @typedef {import('../feed/messages.js').Variable} Variable
 * @typedef {import('../feed/messages.js').ValueRow} ValueRow
 * @typedef {import('../feed/messages.js').PageEvent} PageEvent
 * @typedef {import('../feed/buckets.js').Series} Series
 * @typedef {import('../view/colours.js').Colours} Colours
 * @typedef {import('./cursors.js').Cursors} Cursors
 * @typedef {import('./time_window.js').Span} Span
 *
 * @typedef {object} Pointing what the pointer does on a chart; times in milliseconds since 1970
 * @property {(at: number|null) => void} hover
 * @property {(at: number) => void} click
 * @property {(from: number, to: number) => void} drag
 * @property {(at: number, event: WheelEvent) => void} wheel
 * @property {() => void} doubleClick
 */

/**
 * How many gaps a value had in a window after it was first read.
 * @param {Series} series
 * @param {Span} window
 */
function interruptions(series, { from, to }) {
  const first = series.t.length > 0 ? series.t[0] : Infinity;
  return series.gaps.filter((gap) => gap[0] > first && gap[1] > from && gap[0] < to).length;
}

export class Lane {
  /** @type {Series|null} */
  #series = null;
  /** @type {PageEvent[]} */
  #events = [];
  #until = 0;

  /**
   * @param {Variable} variable
   * @param {Colours} colours
   * @param {Cursors} cursors
   * @param {Pointing} pointing
   * @param {() => void} close
   */
  constructor(variable, colours, cursors, pointing, close) {
    this.address = variable.address;
    this.variable = variable;
    this.#colours = colours;
    this.#cursors = cursors;
    const off = make('button', { type: 'button', class: 'row-button', 'data-test': 'lane-close', text: '×',
      'aria-label': `Take ${variable.name} out of the trends`, title: 'Take out' });
    off.addEventListener('click', close);
    this.name = make('span', { class: 'lane-name', 'data-test': 'lane-name', text: variable.name,
      title: variable.address });
    this.root.append(
      make('div', { class: 'lane-head' }, this.name, this.#value, this.#readout, this.#stats, off), this.#plot,
    );
    this.root.setAttribute('aria-label', `Trend of ${variable.name}`);
    this.root.dataset.address = variable.address;
    this.root.dataset.bit = String(variable.isBit);
    this.chart = new uPlot(this.#options(), [[], []], this.#plot);
    this.#listen(pointing);
  }

  #colours;
  #cursors;
  root = make('div', { class: 'lane', role: 'group', 'data-test': 'lane' });
  #plot = make('div', { class: 'lane-plot' });
  #value = make('span', { class: 'lane-value', 'data-test': 'lane-value' });
  #readout = make('span', { class: 'lane-readout', 'data-test': 'lane-readout' });
  #stats = make('span', { class: 'lane-stats', 'data-test': 'lane-stats' });

  /** @returns {import('uplot').Options} */
  #options() {
    return chartOptions(this.variable.isBit, this.#colours, {
      under: (chart) => this.#series && drawGaps(chart, this.#series, this.#colours),
      over: (chart) => {
        drawMarks(chart, this.#events, this.#colours);
        drawCursors(chart, this.#cursors, this.#colours);
      },
    });
  }

  /** @param {Pointing} pointing */
  #listen(pointing) {
    const { chart } = this;
    const { over } = chart;
    /** @param {MouseEvent} event */
    const time = (event) => chart.posToVal(event.clientX - over.getBoundingClientRect().left, 'x');
    let pressed = 0;
    let mine = false; // the charts share their selection: only the one that was pressed acts on it
    over.addEventListener('mousedown', (event) => {
      pressed = event.clientX;
      mine = true;
    });
    over.addEventListener('mousemove', (event) => pointing.hover(time(event)));
    over.addEventListener('mouseleave', () => pointing.hover(null));
    over.addEventListener('click', (event) => {
      if (Math.abs(event.clientX - pressed) < DRAG_PIXELS) pointing.click(time(event));
    });
    over.addEventListener('dblclick', () => pointing.doubleClick());
    over.addEventListener('wheel', (event) => {
      event.preventDefault();
      pointing.wheel(time(event), event);
    }, { passive: false });
    chart.hooks.setSelect = [() => {
      const { left, width } = chart.select;
      if (width < DRAG_PIXELS) return;
      const from = chart.posToVal(left, 'x');
      const to = chart.posToVal(left + width, 'x');
      chart.setSelect({ left: 0, top: 0, width: 0, height: 0 }, false);
      if (mine) pointing.drag(from, to);
      mine = false;
    }];
  }

  /**
   * Gives the chart its size; the last lane has the times under it.
   * @param {number} width
   * @param {number} height of the whole chart
   * @param {boolean} withTimes
   */
  resize(width, height, withTimes) {
    const axis = this.chart.axes[0];
    if (axis.show !== withTimes) axis.show = withTimes;
    if (this.chart.width !== width || this.chart.height !== height) this.chart.setSize({ width, height });
  }

  /**
   * @param {Series} series
   * @param {Span} window
   * @param {number} until the last value holds until then
   * @param {PageEvent[]} events
   */
  draw(series, window, until, events) {
    this.#series = series;
    this.#until = until;
    this.#events = events;
    const data = plotPoints(series, Math.min(until, window.to));
    this.chart.batch(() => {
      this.chart.setData(data, false);
      this.chart.setScale('x', { min: window.from, max: window.to });
    });
    const { dataset } = this.root;
    dataset.from = String(Math.round(window.from));
    dataset.to = String(Math.round(window.to));
    dataset.points = String(data[1].filter((y, at) => y !== null && data[0][at] >= window.from).length);
    dataset.gaps = String(interruptions(series, window));
  }

  /** The colours are others now. */
  redraw() {
    this.chart.redraw(false);
  }

  /**
   * @param {ValueRow} row
   * @param {boolean} live
   */
  say(row, live) {
    const { quality, sign, word, reason } = look(row, live);
    setAttribute(this.root, 'data-quality', quality);
    setText(this.#value, quality === 'good' ? valueText(row) : `${sign} ${valueText(row)} ${word}`);
    setAttribute(this.#value, 'title', `${word}: ${reason}`);
  }

  /**
   * What stands under the pointer.
   * @param {number|null} at
   */
  hover(at) {
    setText(this.#readout, at === null || !this.#series ? '' : this.#under(this.#series, at));
  }

  /**
   * @param {Series} series
   * @param {number} at
   */
  #under(series, at) {
    const near = (this.chart.scales.x.max ?? 0) - (this.chart.scales.x.min ?? 0);
    const event = this.#events.find((each) => Math.abs(each.at - at) < near / 150);
    const gap = gapAt(series, at);
    const time = clockTime(at, true);
    if (event) return `${clockTime(event.at, true)} ${event.text}`;
    if (at > this.#until) return '';
    if (gap) return `${time} no value: ${gap[2]}`;
    const value = valueAt(series, at);
    return value === null ? `${time} no value` : `${time} ${number(value)}`;
  }

  /** Says what lies between the cursors. @param {Span} window */
  measure(window) {
    const both = this.#cursors.both;
    if (!both || !this.#series) {
      setText(this.#stats, '');
      return;
    }
    const covered = both[0] >= Math.min(this.#series.from, window.from);
    const sum = between(this.#series, both[0], Math.min(both[1], this.#until));
    /** @param {number|null} value */
    const said = (value) => (value === null ? '–' : number(value, 6));
    const gaps = sum.gapMs > 0 ? ` · without ${length(sum.gapMs)} of gaps` : '';
    const text = covered
      ? `Δv ${said(sum.change)} · min ${said(sum.min)} · max ${said(sum.max)} · `
        + `mean ${sum.rough ? '≈ ' : ''}${sum.mean === null ? '–' : number(sum.mean, 5)}`
        + ` · Δt ${length(both[1] - both[0])}${gaps}`
      : 'cursors lie outside of what is loaded';
    setText(this.#stats, text);
    setAttribute(this.#stats, 'title', text);
  }

  close() {
    this.chart.destroy();
    this.root.remove();
  }
}
