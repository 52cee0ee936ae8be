// The strip: link, pass, round trip, faults, recording, writes. While the page has lost the program it says so,
// and what stands there is marked as of then.
import { token } from '../link/token.js';
import { age, dayTime, length } from '../text/ages.js';
import { bytes, counted } from '../text/numbers.js';
import { element, make, setAttribute, setText, show } from '../view/dom.js';

/**
 * @typedef {import('../feed/store.js').Store} Store
 * @typedef {import('../feed/messages.js').Status} Status
 * @typedef {import('../feed/messages.js').Faults} Faults
 *
 * @typedef {'good'|'warn'|'bad'|'off'} Mood
 * @typedef {{text: string, sub?: string, mood?: Mood, title?: string, hidden?: boolean}} Said
 */

/** @type {{name: string, label: string, says: (status: Status, now: number) => Said}[]} */
const CELLS = [
  { name: 'link', label: 'Link', says: link },
  { name: 'pass', label: 'Pass', says: pass },
  { name: 'round-trip', label: 'Round trip', says: roundTrip },
  faults('timeouts', 'Time-outs'),
  faults('retries', 'Retries'),
  faults('giveUps', 'Give-ups'),
  faults('late', 'Dropped', 'Late, duplicate or foreign replies dropped'),
  faults('exceptions', 'Exceptions'),
  { name: 'connections', label: 'Lost · failed', says: connections },
  { name: 'missed', label: 'Missed', says: missed },
  { name: 'recording', label: 'REC', says: recording },
  { name: 'writes', label: 'Writes', says: writes },
];

/** @type {Record<string, {text: string, mood: Mood}>} */
const LINK_LOOKS = {
  connected: { text: '● connected', mood: 'good' }, connecting: { text: '◌ connecting', mood: 'warn' },
  silent: { text: '◌ no answer', mood: 'bad' }, lost: { text: '✕ lost', mood: 'bad' },
  refusing: { text: '⊘ only refusals', mood: 'warn' }, never: { text: '○ not connected yet', mood: 'bad' },
  unknown: { text: '? not recorded', mood: 'off' },
};

/**
 * @param {Status} status
 * @param {number} now
 * @returns {Said}
 */
function link(status, now) {
  if (status.replay) {
    const title = `${status.controller} at this moment of the recording: ${status.link.text}`;
    return { text: '▷ recording', sub: status.link.text, mood: 'off', title };
  }
  const looks = LINK_LOOKS[status.link.state] ?? LINK_LOOKS.lost;
  // The time of a link that is silent or refuses is that of its connection.
  const lead = ['silent', 'refusing'].includes(status.link.state) ? ' up since' : ' since';
  const since = status.link.since === null ? '' : `${lead} ${dayTime(status.link.since, now)}`;
  const title = `${status.link.text} (${status.controller}${since})`;
  return { text: looks.text, sub: `${status.controller}${since}`, mood: looks.mood, title };
}

/**
 * What is said of the link while the page does not hear the program.
 * @param {Said} said
 * @returns {Said}
 */
function unheard({ text, sub = '' }) {
  const title = 'the page has lost the program';
  return { text: '? unknown', sub: `was ${text.slice(2)}, ${sub}`, mood: 'off', title };
}

/**
 * @param {Status} status
 * @returns {Said}
 */
function pass({ pass: { ms, elements, requests } }) {
  // Requests are a mean when passes do not end where requests do.
  const sub = `${counted(elements, 'element')} in ${counted(Number(requests.toFixed(1)), 'request')}`;
  return { text: ms === null ? '–' : length(ms), sub, title: `one pass over all polled elements: ${sub}` };
}

/**
 * @param {Status} status
 * @returns {Said}
 */
function roundTrip({ roundTrip: { medianMs, p99Ms } }) {
  if (medianMs === null) return { text: '–', sub: 'no reply of late' };
  const p99 = p99Ms === null ? '–' : length(p99Ms);
  return { text: length(medianMs), sub: `p99 ${p99}`, title: `median ${length(medianMs)}, 99 % within ${p99}` };
}

/**
 * @param {keyof Faults} name
 * @param {string} label
 * @param {string} [words] what is counted, in full
 */
function faults(name, label, words = label) {
  return {
    name,
    label,
    /**
     * @param {Status} status
     * @returns {Said}
     */
    says({ lastMinute, total, replay }) {
      const title = replay
        ? `${words}: ${lastMinute[name]} in this minute of the recording, ${total[name]} from its begin until then`
        : `${words}: ${lastMinute[name]} in the last minute, ${total[name]} since the start`;
      const mood = lastMinute[name] > 0 ? 'bad' : 'off';
      return { text: String(lastMinute[name]), sub: `of ${total[name]}`, mood, title };
    },
  };
}

/**
 * @param {Status} status
 * @returns {Said}
 */
function connections({ lastMinute: minute, total, replay }) {
  const [now, ever] = replay ? ['in this minute of the recording', 'from its begin until then']
    : ['in the last minute', 'since the start'];
  const title = `Connections lost: ${minute.lostConnections} ${now}, ${total.lostConnections} ${ever}. `
    + `Connecting failed: ${minute.failedConnects} ${now}, ${total.failedConnects} ${ever}`;
  const mood = minute.lostConnections + minute.failedConnects > 0 ? 'bad' : 'off';
  return {
    text: `${minute.lostConnections} · ${minute.failedConnects}`,
    sub: `of ${total.lostConnections} · ${total.failedConnects}`, mood, title,
  };
}

/**
 * Shown only when the page's reader of what happened on the line was too slow.
 * @param {Status} status
 * @returns {Said}
 */
function missed({ missed: count }) {
  const title = `${count} exchanges went by unseen by the page: values and figures may lack them`;
  return { text: String(count), sub: 'unseen', mood: 'bad', title, hidden: count === 0 };
}

/**
 * @param {Status} status
 * @returns {Said}
 */
function recording({ recording: kept, replay }) {
  if (replay) return { text: '–', sub: 'replayed', mood: 'off', title: 'a recording is being replayed' };
  if (!kept) return { text: 'off', sub: 'not recorded', mood: 'off', title: 'nothing is recorded: see --record' };
  const covered = kept.from === null || kept.to === null ? 'nothing yet' : age(kept.to - kept.from);
  const size = `${bytes(kept.bytes)} of ${bytes(kept.limit)}`;
  const title = `${kept.text}: ${size}, covers ${covered}`;
  if (kept.state === 'failed') return { text: '✕ REC failed', sub: kept.text, mood: 'bad', title };
  return { text: `● ${covered}`, sub: size, mood: 'good', title };
}

/**
 * @param {Status} status
 * @returns {Said}
 */
function writes({ writes: { allowed, only, text } }) {
  if (!allowed) return { text: 'off', sub: 'read only', mood: 'off', title: text };
  const sub = only ? counted(only.length, 'address', 'addresses') : 'all';
  return { text: '✎ on', sub, mood: 'warn', title: only ? `${text}: ${only.join(', ')}` : text };
}

/** Why the program does not talk to this page. */
function refusal() {
  if (token() === '') return 'The page lacks its token: open the whole address that the program printed.';
  return 'The program was started anew: open the address it printed. (Its token is not the one this page has.)';
}

export class StripView {
  #store;
  #lost = element('lost', HTMLElement);
  #project = document.querySelector('h1');
  /** @type {{cell: HTMLElement, text: HTMLElement, sub: HTMLElement}[]} */
  #cells;

  /** @param {Store} store */
  constructor(store) {
    this.#store = store;
    const strip = element('strip', HTMLElement);
    this.#cells = CELLS.map(({ name, label }) => {
      const text = make('dd', { class: 'strip-text', 'data-test': `strip-${name}` });
      const sub = make('dd', { class: 'strip-sub', 'data-test': `strip-${name}-sub` });
      const cell = make('div', { class: `strip-cell strip-${name}` }, make('dt', { text: label }), text, sub);
      strip.append(cell);
      return { cell, text, sub };
    });
    store.on(['status', 'link'], () => this.#draw());
    this.#draw();
  }

  #draw() {
    const { status, link: state } = this.#store;
    setAttribute(document.documentElement, 'data-link', state);
    this.#drawLost(state);
    if (!status) return;
    if (this.#project) setText(this.#project, status.project);
    const sign = state === 'live' ? '' : '? ';
    const title = `${sign}${status.project} · tavmir-host`;
    if (document.title !== title) document.title = title;
    const now = this.#store.clock.now();
    CELLS.forEach(({ name, says }, index) => {
      const said = says(status, now);
      this.#drawCell(index, state !== 'live' && name === 'link' ? unheard(said) : said);
    });
  }

  /**
   * @param {number} index
   * @param {Said} said
   */
  #drawCell(index, said) {
    const { cell, text, sub } = this.#cells[index];
    show(cell, said.hidden !== true);
    setText(text, said.text);
    setText(sub, said.sub ?? '');
    setAttribute(cell, 'data-mood', said.mood ?? 'good');
    setAttribute(cell, 'title', said.title ?? '');
  }

  /** @param {import('../feed/store.js').LinkState} state */
  #drawLost(state) {
    const { heardAt } = this.#store.clock;
    const asOf = heardAt === null ? '' : ` What is seen here is as of ${dayTime(heardAt, Date.now())}.`;
    const texts = {
      live: '',
      connecting: '',
      lost: `The page has lost the program.${asOf} Trying again …`,
      refused: refusal() + asOf,
    };
    setText(this.#lost, texts[state]);
    show(this.#lost, texts[state] !== '');
  }
}
