// The page as who looks at it and works it: what stands where, by the hooks of tools/page/web/README.md.
// The only place that knows them.
import { readFileSync } from 'node:fs';

import { Trends } from './trends_view.mjs';
import { waited } from './waited.mjs';

/** @param {string} hook */
const by = (hook) => `[data-test="${hook}"]`;
export const rowHook = by('value-row');

/**
 * @typedef {object} Shown
 * @property {string} text
 * @property {string} quality
 * @property {string} reason
 * @property {string} age
 */

export class PageView {
  /** @param {import('playwright-core').Page} tab */
  constructor(tab) {
    this.tab = tab;
    this.trends = new Trends(tab);
  }

  /** @param {string} hook */
  part(hook) { return this.tab.locator(by(hook)); }

  /** Presses a button. @param {string} hook */
  async press(hook) { await this.part(hook).click(); }

  /** @param {string} state */
  async #link(state) { await this.tab.locator(`html[data-link="${state}"]`).waitFor({ state: 'attached' }); }

  /** Waits until the page hears the program. */
  isLive() { return this.#link('live'); }

  /** Waits until the page says that it does not hear the program. */
  async hasLost() {
    await this.#link('lost');
    await this.part('lost').waitFor();
  }

  /** Waits until the page says that its token is not the program's. */
  async isRefused() {
    await this.#link('refused');
    await this.part('lost').waitFor();
  }

  /** Something that a page loses when it is loaded anew. */
  async leaveMark() { await this.tab.evaluate(() => { Object.assign(window, { marked: true }); }); }

  /** @returns {Promise<boolean>} */
  hasMark() { return this.tab.evaluate(() => 'marked' in window); }

  /** Waits until the words stand somewhere to be seen. @param {RegExp} words */
  async says(words) { await this.tab.getByText(words).filter({ visible: true }).first().waitFor(); }

  /** A cell of the strip: link, pass, roundTrip, timeouts … @param {string} cell @returns {Promise<string>} */
  async strip(cell) {
    const texts = [this.part(`strip-${cell}`), this.part(`strip-${cell}-sub`)].map((part) => part.innerText());
    return (await Promise.all(texts)).join('\n');
  }

  /** Waits until a cell of the strip says so. @param {string} cell @param {RegExp} words */
  async stripSays(cell, words) {
    await waited(() => this.strip(cell), (text) => words.test(text), `the strip's ${cell}`);
  }

  /** How many values there are behind the filter. */
  async rowCount() { return Number(await this.part('values-grid').getAttribute('aria-rowcount')) - 1; }

  /** Only rows with these words. @param {string} words */
  async filter(words) { await this.part('filter').fill(words); }

  /** A row, brought into sight. @param {string} address */
  async row(address) {
    const row = this.tab.locator(`${rowHook}[data-address=${JSON.stringify(address)}]`);
    if (!await row.isVisible()) await this.filter(address);
    await row.waitFor();
    return row;
  }

  /** What stands in a row now. @param {string} address @returns {Promise<Shown>} */
  async value(address) {
    const row = await this.row(address);
    return row.evaluate((element) => {
      const text = (/** @type {string} */ hook) => (
        element.querySelector(`[data-test="${hook}"]`)?.textContent?.trim() ?? '');
      return { text: text('value-text'), quality: /** @type {HTMLElement} */ (element).dataset.quality ?? '',
        reason: text('reason'), age: text('age') };
    });
  }

  /** Waits until a row is as wanted. @param {string} address @param {(shown: Shown) => boolean} wanted */
  async until(address, wanted) { await waited(() => this.value(address), wanted, address); }

  /** Waits until every row in sight is as wanted. @param {(quality: string) => boolean} wanted */
  async untilAll(wanted) {
    const qualities = () => this.tab.locator(rowHook).evaluateAll((rows) => (
      rows.map((row) => /** @type {HTMLElement} */ (row).dataset.quality ?? '')));
    await waited(qualities, (all) => all.length > 0 && all.every(wanted), 'the rows in sight');
  }

  async scrollToLastRow() {
    await this.part('values-rows').evaluate((rows) => { rows.scrollTop = rows.scrollHeight; });
  }

  /** Presses a button of a row. @param {string} address @param {string} hook */
  async pressInRow(address, hook) { await (await this.row(address)).locator(by(hook)).click(); }

  /** Pins a value, and waits for its lane. @param {string} address */
  async pin(address) {
    await this.pressInRow(address, 'pin');
    await this.trends.lane(address).waitFor();
  }

  /** Opens Why? @param {string} address @returns {Promise<{step: string, ok: string, text: string}[]>} */
  async why(address) {
    await this.pressInRow(address, 'why-open');
    return this.whySteps();
  }

  async whySteps() {
    await this.part('why-step').first().waitFor();
    return this.part('why-step').evaluateAll((steps) => steps.map((step) => {
      const { step: name = '', ok = '' } = /** @type {HTMLElement} */ (step).dataset;
      return { step: name, ok, text: /** @type {HTMLElement} */ (step).innerText };
    }));
  }

  /** @param {'events' | 'frames' | 'plan'} view */
  async openView(view) { await this.press(`tab-${view}`); }

  /** Why a value cannot be written; empty: it can. @param {string} address */
  async denied(address) {
    const button = (await this.row(address)).locator(by('write-open'));
    return await button.getAttribute('aria-disabled') === 'true' ? button.getAttribute('title') : '';
  }

  /** @param {string} stage */
  async writeIs(stage) { await this.tab.locator(`${by('write')}[data-stage="${stage}"]`).waitFor(); }

  /** Types a value; that it be written is then to be confirmed. @param {string} address @param {string} value */
  async beginWrite(address, value) {
    await this.pressInRow(address, 'write-open');
    await this.part('write-new').fill(value);
    await this.press('write-go');
    await this.writeIs('confirm');
    return this.part('write').innerText();
  }

  /** Writes and confirms. @param {string} address @param {string} value */
  async write(address, value) {
    const asked = await this.beginWrite(address, value);
    await this.press('write-go');
    return { asked, ...await this.writeEnded() };
  }

  /** What became of the write, as soon as the page says it. */
  async writeEnded() {
    const outcome = this.part('write-outcome');
    await outcome.waitFor();
    return { outcome: await outcome.getAttribute('data-outcome'), text: await outcome.innerText() };
  }

  async dialogIsClosed() { await this.part('write').waitFor({ state: 'hidden' }); }

  /**
   * Counts how often a row's text changes from now on.
   * @param {string} address
   * @returns {Promise<() => Promise<number>>}
   */
  async countChanges(address) {
    const counted = await (await this.row(address)).locator(by('value-text')).evaluateHandle((cell) => {
      const found = { changes: 0 };
      const watcher = new MutationObserver(() => { found.changes += 1; });
      watcher.observe(cell, { childList: true, characterData: true, subtree: true });
      return found;
    });
    return () => counted.evaluate(({ changes }) => changes);
  }

  /** What a press hands to the browser as a file. @param {string} hook */
  async downloaded(hook) {
    const [download] = await Promise.all([this.tab.waitForEvent('download'), this.press(hook)]);
    return { name: download.suggestedFilename(), bytes: readFileSync(await download.path()) };
  }
}
