// Puts the page together: the link fills the store, views read it, and what a view wants of another goes through here.
import { EventsView } from './events/events_view.js';
import { Tabs } from './events/tabs.js';
import { ExplainDrawer } from './explain/explain_drawer.js';
import { keepPins } from './feed/pins.js';
import { SparkMemory } from './feed/spark_memory.js';
import { MOST_PINS, Store } from './feed/store.js';
import { captureButton } from './frames/capture_button.js';
import { FramesView } from './frames/frames_view.js';
import { LiveLink } from './link/live_link.js';
import { takeToken } from './link/token.js';
import { PlanView } from './plan/plan_view.js';
import { ReplayBar } from './replay/replay_bar.js';
import { StripView } from './strip/strip_view.js';
import { TREND_KEYS } from './trends/trend_keys.js';
import { TrendsView } from './trends/trends_view.js';
import { ValuesView } from './values/values_view.js';
import { Announcer } from './view/announcer.js';
import { Colours } from './view/colours.js';
import { Keys } from './view/keys.js';
import { deniedReason } from './write/outcomes.js';
import { WriteDialog } from './write/write_dialog.js';

/** @typedef {import('./feed/messages.js').Variable} Variable */

/** When the program's time goes by this much otherwise than it should, it jumped. */
const JUMP_MS = 3000;

const store = new Store((draw) => requestAnimationFrame(draw));
const announcer = new Announcer();
const colours = new Colours();
const sparks = new SparkMemory();
const keys = new Keys();

/** @param {Variable} variable */
const denied = (variable) => deniedReason(store.status, variable, store.link === 'live');

/** @param {Variable} variable */
function pin(variable) {
  if (variable.type === 'text') announcer.problem(`${variable.name} is a text: it has no trend.`);
  else if (!store.togglePin(variable.address)) announcer.problem(`No more than ${MOST_PINS} values can be pinned.`);
}

keepPins(store);
const drawer = new ExplainDrawer(store);
const writeDialog = new WriteDialog(store, announcer, denied);
const values = new ValuesView(store, sparks, colours, {
  why: (variable) => drawer.open(variable.address), write: (variable) => writeDialog.open(variable), pin, denied,
});
const trends = new TrendsView(store, colours, announcer);
const events = new EventsView(store, (address) => drawer.open(address));
const frames = new FramesView(store);
const plan = new PlanView(store);
const tabs = new Tabs([
  { name: 'events', shown: () => {}, filter: (text) => events.filter(text) },
  { name: 'frames', shown: (shown) => frames.show(shown), filter: (text) => frames.filter(text) },
  { name: 'plan', shown: (shown) => plan.show(shown) },
]);
new StripView(store);
new ReplayBar(store, announcer);
captureButton(announcer);

keys.add({ key: '/', does: 'filter the values', act: () => values.focusFilter() });
keys.add({ key: 'v', does: 'to the values', act: () => values.focus() });
keys.describe('Enter p w', 'values: Why?, pin, write the current row');
keys.add({ key: 't', does: 'to the trends', act: () => trends.focus() });
keys.add({ key: 'z', does: 'freeze the trends, or back to live', act: () => trends.toggleFreeze() });
for (const [name, does] of TREND_KEYS) keys.describe(name, does);
const lower = /** @type {const} */ ([['e', 'events', events], ['f', 'frames', frames], ['g', 'plan', plan]]);
for (const [key, name, view] of lower) {
  keys.add({ key, does: `to the ${name}`, act: () => {
    tabs.open(name);
    if (!view.focus()) tabs.focus(name);
  } });
}
keys.add({ key: 'Escape', does: 'close what is open', act: () => drawer.close() });

for (const skip of document.querySelectorAll('[data-skip]')) {
  skip.addEventListener('click', () => {
    const to = skip.getAttribute('data-skip');
    if (to === 'values-grid') values.focus();
    else document.getElementById(to ?? '')?.focus();
  });
}

/** Puts the value of every variable into the last minute's memory. */
function restoreSparks() {
  const now = store.clock.now();
  for (const row of store.values) sparks.put(row[0], row[3] === 'good' ? row[2] ?? NaN : NaN, now);
}

/** The time is another one: what was seen of the last minute does not lead here. */
function jumped() {
  sparks.reset(store.variables.length, store.clock.now());
  restoreSparks();
  trends.reload();
}

let sparksOf = '';
store.tap((rows, now) => {
  for (const row of rows) sparks.put(row[0], row[3] === 'good' ? row[2] ?? NaN : NaN, now);
});

const link = new LiveLink({
  position: () => ({ epoch: store.epoch, sequence: store.sequence }),
  message: (message) => {
    const wasLive = store.link === 'live';
    const known = `${message.epoch} ${message.generation}`;
    if (message.kind === 'snapshot' && known !== sparksOf) {
      sparks.reset(message.variables.length, message.status.replay?.at ?? message.now);
      sparksOf = known;
    }
    const expected = store.clock.now();
    const fits = store.take(message);
    const jump = JUMP_MS * Math.max(1, message.status.replay?.speed ?? 1);
    if (fits && Math.abs(store.clock.now() - expected) > jump) jumped();
    if (fits && !wasLive) {
      restoreSparks();
      announcer.say('The program is heard');
    }
    return fits;
  },
  lost: () => {
    sparks.lose();
    store.setLink('lost');
  },
  refused: () => {
    sparks.lose();
    store.setLink('refused');
  },
});

setInterval(() => store.touch('values', 'status'), 1000); // ages go on while nothing arrives

takeToken();
window.addEventListener('hashchange', () => {
  if (takeToken()) link.open();
});
link.open();
