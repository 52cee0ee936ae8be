// Asks for the last minute of the values in sight, one after the other, so that a minute is seen when the page comes.
import { get } from '../link/requests.js';
import { seriesOf } from './buckets.js';
import { SECONDS } from './spark_memory.js';

/**
 * @typedef {import('./store.js').Store} Store
 * @typedef {import('./spark_memory.js').SparkMemory} SparkMemory
 * @typedef {import('./messages.js').Variable} Variable
 * @typedef {import('./messages.js').History} History
 */

const WAITING = 60;

export class SparkLoader {
  #store;
  #memory;
  #loaded;
  /** @type {Variable[]} the one asked for last comes first: it is in sight */
  #wanted = [];
  #busy = false;

  /**
   * @param {Store} store
   * @param {SparkMemory} memory
   * @param {() => void} loaded called when there is more to draw
   */
  constructor(store, memory, loaded) {
    this.#store = store;
    this.#memory = memory;
    this.#loaded = loaded;
  }

  /** @param {Variable} variable */
  want(variable) {
    const { type, index } = variable;
    if (type === 'text' || !this.#memory.lacksPast(index) || this.#wanted.includes(variable)) return;
    this.#wanted.push(variable);
    if (this.#wanted.length > WAITING) this.#wanted.shift();
    if (!this.#busy) this.#work();
  }

  async #work() {
    this.#busy = true;
    while (this.#wanted.length > 0 && this.#store.link === 'live') {
      const variable = /** @type {Variable} */ (this.#wanted.pop());
      await this.#load(variable);
    }
    this.#wanted = [];
    this.#busy = false;
    this.#loaded();
  }

  /** @param {Variable} variable */
  async #load(variable) {
    const { generation, epoch, clock } = this.#store;
    const now = clock.now();
    try {
      /** @type {History} */
      const history = await get('history', {
        address: variable.address, from: Math.floor(now - SECONDS * 1000), to: Math.ceil(now), points: SECONDS,
      });
      const same = generation === this.#store.generation && epoch === this.#store.epoch;
      if (same) this.#memory.fillPast(variable.index, seriesOf(history));
    } catch {
      this.#memory.noPast(variable.index);
    }
  }
}
