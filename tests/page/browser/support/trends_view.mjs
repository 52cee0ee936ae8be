// The trends as who looks at them and works them with the pointer.
import { waited } from './waited.mjs';

/**
 * @typedef {object} Lane
 * @property {number} from of the window, ms since 1970
 * @property {number} to
 * @property {number} points drawn
 * @property {number} gaps in sight
 * @property {boolean} isBit
 * @property {string} stats what stands between the cursors
 */

export class Trends {
  /** @param {import('playwright-core').Page} tab */
  constructor(tab) { this.tab = tab; }

  /** @param {string} address */
  lane(address) { return this.tab.locator(`[data-test="lane"][data-address=${JSON.stringify(address)}]`); }

  /** What a lane shows now. @param {string} address @returns {Promise<Lane>} */
  now(address) {
    return this.lane(address).evaluate((lane) => {
      const { from, to, points, gaps, bit } = /** @type {HTMLElement} */ (lane).dataset;
      const stats = lane.querySelector('[data-test="lane-stats"]')?.textContent ?? '';
      const [its, ends, count, holes] = [from, to, points, gaps].map(Number);
      return { from: its, to: ends, points: count, gaps: holes, isBit: bit === 'true', stats };
    });
  }

  /** Waits until a lane is as wanted. @param {string} address @param {(lane: Lane) => boolean} wanted */
  async until(address, wanted) {
    await waited(() => this.now(address), wanted, `the lane of ${address}`);
    return this.now(address);
  }

  /** Whether the window of the trends goes on with time. */
  async isStreaming() { return await this.tab.locator('[data-test="trends"]').getAttribute('data-mode') === 'live'; }

  /**
   * Draws over a part of a lane with the pointer.
   * @param {string} address
   * @param {number} from 0 to 1
   * @param {number} to
   */
  async drag(address, from, to) {
    const [start, end, y] = await Promise.all([this.#at(address, from), this.#at(address, to), this.#middle(address)]);
    await this.tab.mouse.move(start, y);
    await this.tab.mouse.down();
    await this.tab.mouse.move((start + end) / 2, y, { steps: 3 });
    await this.tab.mouse.move(end, y, { steps: 3 });
    await this.tab.mouse.up();
  }

  /** @param {string} address @param {number} place 0 to 1 */
  async click(address, place) {
    await this.tab.mouse.click(await this.#at(address, place), await this.#middle(address));
  }

  /** @param {string} address */
  async #plot(address) {
    const plot = this.lane(address).locator('.u-over');
    await plot.scrollIntoViewIfNeeded();
    const box = await plot.boundingBox();
    if (!box) throw new Error(`${address} has no picture`);
    return box;
  }

  /** @param {string} address @param {number} place */
  async #at(address, place) {
    const box = await this.#plot(address);
    return box.x + box.width * place;
  }

  /** @param {string} address */
  async #middle(address) {
    const box = await this.#plot(address);
    return box.y + box.height / 2;
  }
}
