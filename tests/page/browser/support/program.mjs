// A program as a test starts it: what it says, line by line, and how it ends.
import { spawn } from 'node:child_process';
import { once } from 'node:events';

/** Programs that have not ended. None outlives this process. @type {Set<import('node:child_process').ChildProcess>} */
const running = new Set();
process.on('exit', () => running.forEach((child) => child.kill('SIGKILL')));

/** For what takes milliseconds on an idle machine: how long it may take on a busy one. */
export const patienceMs = 30_000;

export class Program {
  #file;
  #said = '';
  #child;
  /** @type {Promise<[number | null, NodeJS.Signals | null]>} */
  #ended;

  /** Starts it. @param {string} file @param {string[]} options */
  constructor(file, options) {
    this.#file = file;
    this.#child = spawn(file, options, { stdio: ['pipe', 'pipe', 'pipe'] });
    running.add(this.#child);
    for (const stream of [this.#child.stdout, this.#child.stderr]) {
      stream.setEncoding('utf8').on('data', (text) => { this.#said += text; });
    }
    this.#ended = /** @type {any} */ (once(this.#child, 'close'));
    this.#ended.finally(() => running.delete(this.#child)).catch(() => {});
  }

  /** Everything it has said so far, on both of its outputs. */
  get said() { return this.#said; }

  get id() { return /** @type {number} */ (this.#child.pid); }

  /**
   * The first line that matches, as soon as it has been said.
   * @param {RegExp} pattern with one group, which is returned
   * @returns {Promise<string>}
   */
  async line(pattern) {
    const until = Date.now() + patienceMs;
    while (Date.now() < until) {
      const found = this.#said.split('\n').slice(0, -1).map((line) => pattern.exec(line)).find(Boolean);
      if (found) return /** @type {string} */ (found[1]);
      if (this.#child.exitCode !== null || this.#child.signalCode !== null) break;
      await new Promise((resolve) => { setTimeout(resolve, 10); });
    }
    throw new Error(`${this.#file} did not say ${pattern} but: ${this.#said}`);
  }

  /** @param {NodeJS.Signals} signal */
  signal(signal) { this.#child.kill(signal); }

  /** Waits until it has ended by itself. @returns {Promise<number | null>} its exit status, null: a signal's */
  async end() {
    const [status] = await this.#ended;
    return status;
  }

  /** Ends it as an operator does, and holds it to a clean end. */
  async stop() {
    if (this.#child.exitCode !== null || this.#child.signalCode !== null) return;
    this.#child.kill('SIGTERM');
    const killer = setTimeout(() => this.#child.kill('SIGKILL'), patienceMs);
    const status = await this.end();
    clearTimeout(killer);
    if (status !== 0) throw new Error(`${this.#file} ended with ${status}: ${this.#said.slice(-4000)}`);
  }

  /** Ends it without a word. */
  async kill() {
    this.#child.kill('SIGKILL');
    await this.end();
  }
}
