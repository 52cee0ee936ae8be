// The time that the trends show: the newest so many milliseconds, or a window that is held.

export const SHORTEST_MS = 20;
export const LONGEST_MS = 7 * 24 * 3600 * 1000;

/** @typedef {{from: number, to: number}} Span */

export class TimeWindow {
  /** Length of the window while it is live. */
  span = 60000;
  /** @type {Span|null} null: live */
  held = null;

  get live() {
    return this.held === null;
  }

  /**
   * @param {number} now
   * @returns {Span}
   */
  at(now) {
    return this.held ?? { from: now - this.span, to: now };
  }

  /** @param {number} now */
  freeze(now) {
    this.held = this.at(now);
  }

  backToLive() {
    this.held = null;
  }

  /**
   * Live with another length; a held window keeps its end.
   * @param {number} span
   */
  setSpan(span) {
    this.span = span;
    if (this.held) this.held = { from: this.held.to - span, to: this.held.to };
  }

  /**
   * @param {number} a
   * @param {number} b
   */
  zoomTo(a, b) {
    const from = Math.min(a, b);
    this.held = { from, to: Math.max(a, b, from + SHORTEST_MS) };
  }

  /**
   * Longer or shorter by a factor, with the time `around` staying where it is.
   * @param {number} factor
   * @param {number} around
   * @param {number} now
   */
  zoomBy(factor, around, now) {
    const { from, to } = this.at(now);
    const length = Math.min(Math.max((to - from) * factor, SHORTEST_MS), LONGEST_MS);
    const scale = length / (to - from);
    this.held = { from: around - (around - from) * scale, to: around + (to - around) * scale };
  }

  /**
   * Earlier (negative) or later by a part of the window; never into the future.
   * @param {number} part
   * @param {number} now
   */
  pan(part, now) {
    const { from, to } = this.at(now);
    const by = Math.min((to - from) * part, now - to);
    if (this.held === null && by >= 0) return;
    this.held = { from: from + by, to: to + by };
  }
}
