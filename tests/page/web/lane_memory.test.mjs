// What a lane knows when the time becomes another one while the program is asked.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { LaneMemory } from '../../../tools/page/web/app/trends/lane_memory.js';

const span = 60_000;
const hour = 3_600_000;

/** Answers that wait until they are given. @type {((said: object) => void)[]} */
const asked = [];
Object.assign(globalThis, {
  sessionStorage: { getItem: () => null },
  fetch: () => new Promise((answer) => {
    asked.push((said) => answer({ ok: true, json: async () => said }));
  }),
});

/** @param {number} now @param {number} value stands there since a second before */
function history(now, value) {
  return { address: 'A', from: now - span, to: now, oldest: 0, source: 'memory', isBit: false, t: [now - 1000],
    min: [value], max: [value], last: [value], gaps: [], events: [] };
}

/** @param {LaneMemory} memory @param {number} now */
const shown = (memory, now) => memory.series({ from: now - span, to: now }, true);

test('what was asked for before the clock was set back is not shown behind it', async () => {
  const now = 10 * hour;
  const memory = new LaneMemory('A', now);
  const first = memory.load(span, now);
  asked[0](history(now, 1));
  await first;
  assert.deepEqual(shown(memory, now).last, [1]);

  const late = memory.catchUp(span, now + 2000);
  memory.reset(now - hour);
  const again = memory.load(span, now - hour);
  asked[2](history(now - hour, 3));
  await again;
  asked[1](history(now + 2000, 2));
  await late;
  assert.deepEqual(shown(memory, now - hour).last, [3]);
});
