// Writes one variable: enter → confirm old and new → sent → ended, with the outcome and what was read back.
import { AskError, post } from '../link/requests.js';
import { look, valueText } from '../text/qualities.js';
import { element, make, setText, show } from '../view/dom.js';
import { OUTCOMES } from './outcomes.js';

/**
 * @typedef {import('../feed/store.js').Store} Store
 * @typedef {import('../feed/messages.js').Variable} Variable
 * @typedef {import('../feed/messages.js').WriteAnswer} WriteAnswer
 *
 * @typedef {'enter'|'confirm'|'sent'|'ended'} Stage
 */

/**
 * Whether the program said that it did not begin with a write. Any other failure says nothing of what it did.
 * @param {unknown} problem
 */
function isTurnedAway(problem) {
  if (!(problem instanceof AskError)) return false;
  return problem.status === 503 || (problem.status >= 400 && problem.status < 500);
}

export class WriteDialog {
  #store;
  #announcer;
  #denied;
  /** @type {Variable|null} */
  #variable = null;
  /** @type {Stage} */
  #stage = 'enter';
  /** The value that the user saw when asked to confirm; null: none was ever read. @type {string|null} */
  #expected = null;
  #asked = 0;
  #dialog = element('write', HTMLDialogElement);
  #title = element('write-title', HTMLElement);
  #reason = element('write-denied', HTMLElement);
  #old = element('write-old', HTMLElement);
  #new = element('write-new', HTMLInputElement);
  #hint = element('write-hint', HTMLElement);
  #question = element('write-question', HTMLElement);
  #outcome = element('write-outcome', HTMLElement);
  #cancel = element('write-cancel', HTMLButtonElement);
  #go = element('write-go', HTMLButtonElement);

  /**
   * @param {Store} store
   * @param {import('../view/announcer.js').Announcer} announcer
   * @param {(variable: Variable) => string} denied why a variable cannot be written; empty when it can
   */
  constructor(store, announcer, denied) {
    this.#store = store;
    this.#announcer = announcer;
    this.#denied = denied;
    element('write-form', HTMLFormElement).addEventListener('submit', (event) => {
      event.preventDefault();
      this.#next();
    });
    this.#cancel.addEventListener('click', () => this.#back());
    this.#dialog.addEventListener('close', () => { this.#variable = null; });
    store.on(['values', 'status', 'link'], () => this.#showOld());
  }

  /** @param {Variable} variable */
  open(variable) {
    this.#variable = variable;
    setText(this.#title, `Write ${variable.name}`);
    this.#title.title = variable.address;
    const limits = variable.low === null || variable.high === null ? '' : `, ${variable.low} to ${variable.high}`;
    const kind = variable.format === variable.type ? variable.type : `${variable.format} ${variable.type}`;
    setText(this.#hint, `${kind}${limits}`);
    const denied = this.#denied(variable);
    setText(this.#reason, denied);
    show(this.#reason, denied !== '');
    this.#new.value = '';
    this.#enter('enter');
    this.#showOld();
    this.#dialog.showModal();
    (denied === '' ? this.#new : this.#cancel).focus();
  }

  /** @param {Stage} stage */
  #enter(stage) {
    this.#stage = stage;
    this.#dialog.dataset.stage = stage;
    const denied = !this.#reason.hidden;
    this.#new.disabled = denied || stage !== 'enter';
    this.#go.disabled = denied || stage === 'sent';
    show(this.#question, stage === 'confirm' || stage === 'sent');
    if (stage === 'enter' || stage === 'confirm') show(this.#outcome, false);
    const go = { enter: 'Write …', confirm: 'Write now', sent: 'Writing …', ended: 'Write again …' };
    const cancel = { enter: 'Cancel', confirm: 'Back', sent: 'Close', ended: 'Close' };
    setText(this.#go, go[stage]);
    setText(this.#cancel, denied ? 'Close' : cancel[stage]);
  }

  #showOld() {
    if (!this.#variable) return;
    const row = this.#store.values[this.#variable.index];
    if (!row) return;
    const { quality, sign, word, reason } = look(row, this.#store.link === 'live');
    setText(this.#old, quality === 'good' ? valueText(row) : `${sign} ${valueText(row)} (${word}: ${reason})`);
    this.#old.dataset.quality = quality;
  }

  #next() {
    if (this.#stage === 'enter') this.#confirm();
    else if (this.#stage === 'confirm') this.#send();
    else if (this.#stage === 'ended') this.#again();
  }

  #again() {
    this.#enter('enter');
    this.#new.focus();
    this.#new.select();
  }

  #back() {
    if (this.#stage === 'confirm') this.#again();
    else this.#dialog.close();
  }

  #confirm() {
    if (!this.#variable || this.#new.value === '') {
      this.#say('bad', 'What is to be written?');
      return;
    }
    const row = this.#store.values[this.#variable.index];
    this.#expected = row[3] === 'never' ? null : row[1];
    const { quality, word } = look(row, this.#store.link === 'live');
    const doubt = quality === 'good' ? '' : ` (${word})`;
    setText(this.#question, `${this.#variable.address}: from ${valueText(row)}${doubt} to ${this.#new.value}?`);
    this.#enter('confirm');
    this.#go.focus();
  }

  async #send() {
    const variable = this.#variable;
    if (!variable) return;
    this.#enter('sent');
    this.#asked += 1;
    const mine = this.#asked;
    const body = { address: variable.address, value: this.#new.value };
    try {
      /** @type {WriteAnswer} */
      const answer = await post('write', this.#expected === null ? body : { ...body, expect: this.#expected });
      if (mine === this.#asked) this.#ended(variable, answer);
    } catch (problem) {
      if (mine === this.#asked) this.#failed(problem);
    }
  }

  /**
   * @param {Variable} variable
   * @param {WriteAnswer} answer
   */
  #ended(variable, answer) {
    const { mood, words } = OUTCOMES[answer.outcome] ?? { mood: 'bad', words: answer.outcome };
    this.#enter('ended');
    this.#say(mood, words, answer.text);
    this.#outcome.dataset.outcome = answer.outcome;
    const read = answer.readBack;
    const back = read === null ? 'Not read back.'
      : `Read back: ${read.quality === 'never' ? '–' : read.text}`
        + (read.quality === 'good' ? '' : ` (${read.quality}: ${read.reason})`);
    this.#outcome.append(make('p', { 'data-test': 'write-readback', text: back }));
    this.#announcer.say(`Write of ${variable.name}: ${answer.outcome}. ${back}`);
    if (this.#dialog.open) this.#cancel.focus();
    else this.#announcer.problem(`Write of ${variable.name}: ${words}`);
  }

  /** @param {unknown} problem */
  #failed(problem) {
    const text = problem instanceof Error ? problem.message : String(problem);
    const sent = !isTurnedAway(problem);
    const lost = problem instanceof AskError && problem.status === 0;
    this.#enter('enter');
    const asked = lost ? 'The program was lost while it was asked' : 'The program did not say what came of it';
    const lead = sent ? `${asked}: what became of the write is not known.` : 'Nothing was written.';
    this.#say('bad', lead, text);
    this.#outcome.dataset.outcome = sent ? 'lost' : 'error';
    this.#new.focus();
  }

  /**
   * @param {string} mood
   * @param {...string} texts
   */
  #say(mood, ...texts) {
    delete this.#outcome.dataset.outcome;
    this.#outcome.dataset.mood = mood;
    const lines = texts.filter((text) => text !== '').map((text) => make('p', { text }));
    this.#outcome.replaceChildren(...lines);
    show(this.#outcome, true);
  }
}
