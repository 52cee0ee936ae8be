// The program's time, between two messages carried on by the browser's steady clock.

/** @typedef {import('./messages.js').Replay} Replay */

export class Clock {
  #said = Date.now();
  #heard = performance.now();
  #speed = 1;
  /** Time of the last message; null before the first. @type {number|null} */
  heardAt = null;

  /**
   * @param {number} now what a message said
   * @param {Replay|null} replay in a recording its own time goes on, at its own speed
   */
  set(now, replay) {
    this.#said = replay ? replay.at : now;
    this.#speed = replay ? (replay.playing ? replay.speed : 0) : 1;
    this.#heard = performance.now();
    this.heardAt = this.#said;
  }

  /** Milliseconds since 1970, as the program counts them. */
  now() {
    return this.#said + (performance.now() - this.#heard) * this.#speed;
  }
}
