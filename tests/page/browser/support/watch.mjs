// What no page may ever do, looked at in every test: break its own content policy, complain on the
// console, throw, or ask anything of another place than the one it came from.

export class Watch {
  /** @type {string[]} */ #problems = [];
  /** @type {RegExp[]} */ #expected = [];
  /** @type {Set<string>} */ #origins = new Set();

  /** A place whose pages are looked at, and which they may ask. @param {string} origin */
  allow(origin) { this.#origins.add(origin); }

  /** What this test brings about on purpose, as the console says it. @param {RegExp} words */
  expect(words) { this.#expected.push(words); }

  /** @param {import('playwright-core').BrowserContext} context */
  async over(context) {
    context.on('console', (message) => {
      if (message.type() === 'error') this.#add(`console: ${message.text()}`);
    });
    context.on('weberror', (error) => this.#add(`not caught: ${error.error().stack}`));
    context.on('request', (request) => this.#asked(request.url()));
    context.on('page', (page) => {
      page.on('websocket', (socket) => this.#asked(socket.url().replace(/^ws/, 'http')));
      page.on('crash', () => this.#add('the page crashed'));
    });
    await context.exposeBinding('reportToTest', (_, words) => this.#add(words));
    await context.addInitScript(() => {
      document.addEventListener('securitypolicyviolation', (event) => {
        // @ts-expect-error The binding is the test's.
        window.reportToTest(`content policy: ${event.effectiveDirective} ${event.blockedURI} ${event.sourceFile}`);
      });
    });
  }

  /** @returns {string[]} */
  get problems() { return this.#problems; }

  /** @param {string} url */
  #asked(url) {
    const { origin } = new URL(url);
    if (!this.#origins.has(origin)) this.#add(`asked another place: ${url}`);
  }

  /** @param {string} problem */
  #add(problem) {
    if (!this.#expected.some((words) => words.test(problem))) this.#problems.push(problem);
  }
}
