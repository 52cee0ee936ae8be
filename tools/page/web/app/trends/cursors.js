// The two cursors: times in the trends, one of which a click or the keys move.

export class Cursors {
  /** @type {number|null} */
  a = null;
  /** @type {number|null} */
  b = null;
  /** The one that is moved; null: a click does nothing. @type {'a'|'b'|null} */
  active = null;

  /** Both, the earlier one first; null while one is missing. @returns {[number, number]|null} */
  get both() {
    if (this.a === null || this.b === null) return null;
    return [Math.min(this.a, this.b), Math.max(this.a, this.b)];
  }

  /**
   * Makes a cursor the one that is moved; one that is nowhere yet begins at a time.
   * @param {'a'|'b'} name
   * @param {number} at
   */
  take(name, at) {
    this.active = name;
    this[name] ??= at;
  }

  /** @param {number} at */
  put(at) {
    if (this.active) this[this.active] = at;
  }

  /** @param {number} by milliseconds */
  move(by) {
    if (this.active) this[this.active] = (this[this.active] ?? 0) + by;
  }

  clear() {
    this.a = null;
    this.b = null;
    this.active = null;
  }
}
