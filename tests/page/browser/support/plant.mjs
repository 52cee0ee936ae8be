// A simulated controller and a host with a page in front of it, each on a free port of loopback.
import { controllerFile, hostFile, plantFile } from './machine.mjs';
import { Program } from './program.mjs';

/**
 * @typedef {object} Settings
 * @property {string} [project] file; the example plant when left out
 * @property {string[]} [controller] further options of the controller
 * @property {string[]} [host] further options of the host
 * @property {boolean} [writes] the page may write
 */

export class Plant {
  /** @type {Program | undefined} */ #controller;
  /** @type {Program | undefined} */ #host;
  /** HOST:PORT of the controller. */
  place = '127.0.0.1:0';
  /** Where the page is, with its token. */
  url = '';

  /** @param {Settings} settings */
  constructor(settings) {
    this.project = settings.project ?? plantFile;
    this.controllerOptions = settings.controller ?? [];
    this.hostOptions = [...(settings.host ?? []), ...(settings.writes ? ['--allow-writes'] : [])];
  }

  async start() {
    await this.startController();
    await this.startHost();
  }

  /** At the place where it was before, if there was one. @param {string[]} [options] instead of the settings' */
  async startController(options = this.controllerOptions) {
    this.#controller = new Program(controllerFile,
      ['--listen', this.place, '--project', this.project, ...options]);
    this.place = await this.controller.line(/^listening on (\S+)$/);
  }

  /** At the port where its page was before, if there was one. */
  async startHost() {
    const port = this.url ? new URL(this.url).port : '0';
    this.#host = new Program(hostFile, ['run', this.project, '--connect', this.place,
      `--page=127.0.0.1:${port}`, '--format', 'csv', '--interval', '3600000', ...this.hostOptions]);
    this.url = await this.host.line(/^(http:\/\/\S+#token=[0-9a-f]{32})$/);
  }

  /** The controller's program, started before. */
  get controller() { return started(this.#controller); }

  /** The host's program, started before. */
  get host() { return started(this.#host); }

  /** What the host has said. */
  get said() { return this.#host?.said ?? ''; }

  get origin() { return new URL(this.url).origin; }
  get token() { return this.url.slice(-32); }

  /** What the interface answers. @param {string} path behind /api/v1/ @param {RequestInit} [request] */
  ask(path, request = {}) {
    const headers = { Authorization: `Bearer ${this.token}`, ...request.headers };
    return fetch(`${this.origin}/api/v1/${path}`, { ...request, headers });
  }

  /** @param {string} path @returns {Promise<any>} */
  async json(path) {
    const answer = await this.ask(path);
    if (!answer.ok) throw new Error(`${path}: ${answer.status} ${await answer.text()}`);
    return answer.json();
  }

  /** What another host reads from the controller. @param {string} address @returns {Promise<string>} */
  async read(address) {
    const said = await this.#another('read', address);
    return said.replace(/^.* = /, '');
  }

  /** What an operator at another host writes. @param {string} address @param {string | number} value */
  async write(address, value) { await this.#another('write', `${address}=${value}`); }

  /** @param {string} command @param {string} what */
  async #another(command, what) {
    const host = new Program(hostFile, [command, this.project, '--connect', this.place, what]);
    const status = await host.end();
    if (status !== 0) throw new Error(`${command} ${what}: ${host.said}`);
    return host.said.trimEnd();
  }

  async stop() {
    const ends = await Promise.allSettled([this.#host?.stop(), this.#controller?.stop()]);
    const failed = ends.find((end) => end.status === 'rejected');
    if (failed) throw /** @type {PromiseRejectedResult} */ (failed).reason;
  }
}

/** @param {Program | undefined} program */
function started(program) {
  if (!program) throw new Error('the program has not been started');
  return program;
}
