// The bar of a recording: where in its time the page is, playing or not, and how fast.
import { post } from '../link/requests.js';
import { dayTime } from '../text/ages.js';
import { element, setText, show } from '../view/dom.js';

/** @typedef {import('../feed/store.js').Store} Store */

const SETTLE_MS = 150;

export class ReplayBar {
  #store;
  #announcer;
  #bar = element('replay', HTMLElement);
  #text = document.querySelector('[data-test="replay-text"]');
  #play = element('replay-play', HTMLButtonElement);
  #speed = element('replay-speed', HTMLSelectElement);
  #at = element('replay-at', HTMLInputElement);
  #time = element('replay-time', HTMLOutputElement);
  #timer = 0;
  /** How often the slider was moved by hand, and to which of these moves the program has gone. */
  #moves = 0;
  #arrived = 0;

  /**
   * @param {Store} store
   * @param {import('../view/announcer.js').Announcer} announcer
   */
  constructor(store, announcer) {
    this.#store = store;
    this.#announcer = announcer;
    this.#play.addEventListener('click', () => this.#toggle());
    this.#speed.addEventListener('change', () => this.#send({ playing: this.#playing, speed: this.#wanted }));
    this.#at.addEventListener('input', () => this.#moved());
    store.on(['status'], () => this.#draw());
  }

  get #playing() {
    return this.#store.status?.replay?.playing ?? false;
  }

  get #wanted() {
    return Number(this.#speed.value);
  }

  #toggle() {
    this.#send({ playing: !this.#playing, speed: this.#wanted });
  }

  // Of moves in quick succession only the last is asked for, also while an earlier one is under way.
  #moved() {
    const at = Number(this.#at.value);
    this.#moves += 1;
    const moves = this.#moves;
    setText(this.#time, dayTime(at, Date.now()));
    clearTimeout(this.#timer);
    this.#timer = setTimeout(async () => {
      await this.#send({ at });
      this.#arrived = Math.max(this.#arrived, moves);
    }, SETTLE_MS);
  }

  /** @param {object} wish */
  async #send(wish) {
    try {
      await post('replay', wish);
    } catch (problem) {
      const words = problem instanceof Error ? problem.message : String(problem);
      this.#announcer.problem(`The recording stays where it is: ${words}`);
    }
  }

  #draw() {
    const replay = this.#store.status?.replay ?? null;
    show(this.#bar, replay !== null);
    if (!replay) return;
    const span = `${dayTime(replay.from, Date.now())} – ${dayTime(replay.to, Date.now())}`;
    const samples = 'Sample: since a value was written down, not since it was read.';
    if (this.#text) setText(this.#text, `A recording (${span}), no controller. ${samples}`);
    setText(this.#play, replay.playing ? '❚❚ Pause' : '▶ Play');
    this.#at.min = String(replay.from);
    this.#at.max = String(replay.to);
    if (this.#arrived < this.#moves) return;
    this.#at.value = String(replay.at);
    setText(this.#time, dayTime(replay.at, Date.now()));
    if (document.activeElement !== this.#speed && replay.speed > 0) this.#speed.value = String(replay.speed);
  }
}
