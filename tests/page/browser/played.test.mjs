// What a host says that no controller brings about on demand: a recording, a replay, every outcome.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { PageView } from './support/page_view.mjs';
import { PlayedHost, variable } from './support/played_host.mjs';
import { inTime } from './support/waited.mjs';
import { watchedWindow } from './support/window.mjs';

/**
 * @param {string} statement
 * @param {(host: PlayedHost) => void} prepare
 * @param {(page: PageView, host: PlayedHost, watch: import('./support/watch.mjs').Watch) => Promise<void>} body
 */
function playedTest(statement, prepare, body) {
  test(statement, async () => {
    const host = new PlayedHost();
    prepare(host);
    const { context, watch } = await watchedWindow();
    try {
      const url = await host.start();
      watch.allow(host.origin);
      const page = new PageView(await context.newPage());
      await page.tab.goto(url);
      await page.isLive();
      await inTime(body(page, host, watch));
      assert.deepEqual(watch.problems, []);
    } catch (error) {
      console.error([statement, ...watch.problems].join('\n'));
      throw error;
    } finally {
      await context.close();
      host.stop();
    }
  });
}

/** A plan of one request. @param {string[]} variables */
const plan = (variables) => ({ generation: 1, hints: [], passElements: variables.length, requests: [{ number: 1, of: 1,
  station: 1, class: 'words', function: 'read words', elements: variables.length, bytes: 20, first: variables[0],
  last: variables[variables.length - 1], ends: 'no more elements', variables }] });

playedTest('without a recording the strip says that there is none', () => {}, async (page) => {
  await page.stripSays('recording', /off/i);
});

playedTest('a recording stands in the strip, with size and limit; a failed one with its reason', (host) => {
  host.status.recording = { state: 'on', text: 'recording into plant-rec', bytes: 12 * 1024 * 1024,
    limit: 1024 * 1024 * 1024, from: Date.now() - 3_600_000, to: Date.now() };
}, async (page, host) => {
  await page.stripSays('recording', /12.*MiB/s);
  const text = 'no space left on device';
  host.status.recording = { state: 'failed', text, bytes: 1, limit: 2, from: null, to: null };
  await page.stripSays('recording', /no space left on device/);
  await page.part('strip-recording').locator('xpath=..').and(page.tab.locator('[data-mood="bad"]')).waitFor();
});

const words = {
  done: 'done: the controller took it', refused: 'refused: exception 2, illegal data address',
  'not sent': 'not sent: no connection', unknown: 'unknown: sent once, never answered',
  partial: 'partial: 2 of 5 elements acknowledged',
};
for (const [outcome, text] of Object.entries(words)) {
  playedTest(`a write that ends as "${outcome}" says so, in the host's words`, (host) => {
    host.answers.write = () => ({ outcome, text, old: '1500', readBack: null });
  }, async (page, host) => {
    const ended = await page.write('Main.Level', '7');
    assert.equal(ended.outcome, outcome);
    assert.ok(ended.text.includes(text), ended.text);
    const posted = host.posted.map(({ path, body }) => [path, body.address, body.value]);
    assert.deepEqual(posted, [['write', 'Main.Level', '7']]);
  });
}

playedTest('a read-back that differs from what was written is shown as it is', (host) => {
  host.answers.write = () => ({ outcome: 'done', text: 'done', old: '1500',
    readBack: { text: '1600', number: 1600, quality: 'good', reason: '' } });
}, async (page) => {
  await page.write('Main.Level', '7');
  assert.match(await page.part('write-readback').innerText(), /1600/);
});

/** @type {[number, RegExp][]} */
const turnedDown = [[504, /not known/], [500, /not known/], [503, /Nothing was written/]];
for (const [status, said] of turnedDown) {
  playedTest(`a write that ends with HTTP status ${status} is said to be what it can be`, (host) => {
    host.statuses.write = status;
    host.answers.write = () => ({ error: 'in the words of the host' });
  }, async (page, _host, watch) => {
    watch.expect(/Failed to load resource/);
    const { text } = await page.write('Main.Level', '7');
    assert.match(text, said);
    assert.match(text, /in the words of the host/);
  });
}

playedTest('a controller that is connected and does not answer is not called lost', (host) => {
  host.status.link = { state: 'silent', text: 'no reply from 127.0.0.1:5020 for 4 s', since: Date.now() - 60_000 };
}, async (page) => {
  await page.stripSays('link', /no answer/);
  const said = await page.strip('link');
  assert.match(said, / up since \d/);
  assert.doesNotMatch(said, /lost/);
});

playedTest('without a recent round trip the strip does not say that there never was a reply', (host) => {
  host.status.roundTrip = { medianMs: null, p99Ms: null };
}, async (page) => {
  await page.stripSays('round-trip', /–/);
  assert.doesNotMatch(await page.strip('round-trip'), /yet/);
});

playedTest('the plan is another one as soon as a variable is set aside or comes back', (host) => {
  host.answers.plan = () => plan(['Main.Level', 'Main.Speed']);
}, async (page, host) => {
  await page.openView('plan');
  await page.part('plan-request').getByText('2 variables').waitFor();
  host.answers.plan = () => plan(['Main.Level']);
  host.status.planGeneration = 2;
  await page.part('plan-request').getByText('1 variable', { exact: true }).waitFor();
});

playedTest('what is dropped is said to be late, duplicate or foreign', (host) => {
  host.status.lastMinute.late = 3;
}, async (page) => {
  await page.stripSays('late', /3/);
  const cell = page.part('strip-late').locator('xpath=..');
  assert.match(await cell.innerText(), /dropped/i);
  assert.match(await cell.getAttribute('title') ?? '', /^Late, duplicate or foreign replies dropped: 3 in the last/);
});

playedTest('a write over an empty text expects it to be empty still', (host) => {
  host.variables[0] = variable(0, 'Main.Level', { type: 'text', format: 'text' });
  host.answers.write = () => ({ outcome: 'done', text: 'done', old: '', readBack: null });
}, async (page, host) => {
  host.values[0] = [0, '', null, 'good', '', Date.now(), Date.now()];
  await page.until('Main.Level', ({ text }) => text === '');
  await page.write('Main.Level', 'Ada');
  assert.deepEqual(host.posted.map(({ body }) => body), [{ address: 'Main.Level', value: 'Ada', expect: '' }]);
});

playedTest('a write over a value that was never read expects nothing', (host) => {
  host.answers.write = () => ({ outcome: 'done', text: 'done', old: null, readBack: null });
}, async (page, host) => {
  host.values[0] = [0, '–', null, 'never', 'no reply yet', null, null];
  await page.until('Main.Level', ({ quality }) => quality === 'never');
  await page.write('Main.Level', '7');
  assert.deepEqual(host.posted.map(({ body }) => body), [{ address: 'Main.Level', value: '7' }]);
});

playedTest('an event that is earlier by the clock than the one before has no time behind it', (host) => {
  const at = Date.now();
  const event = { kind: 'write', text: 'written', variable: null, address: null, bad: false };
  host.events = [{ ...event, id: 1, at }, { ...event, id: 2, at: at - 3_600_000 }, { ...event, id: 3, at }];
}, async (page) => {
  await page.openView('events');
  await page.part('event').nth(2).waitFor();
  const after = await page.tab.locator('[data-test="event"] .list-after').allInnerTexts();
  assert.deepEqual(after, ['+60 min 0 s', '', '']);
});

playedTest('of a running host the age of each reading stands beside the value', () => {}, async (page) => {
  assert.equal(await page.part('values-age').innerText(), 'Age');
});

const begin = Date.UTC(2026, 0, 2, 3, 4, 5);
playedTest('a recording that is played back says so, and its time can be chosen', (host) => {
  host.status.replay = { from: begin, to: begin + 600_000, at: begin + 300_000, playing: false, speed: 1 };
  host.status.writes = { allowed: false, only: null, text: 'off' };
  host.answers.replay = () => ({});
}, async (page, host) => {
  await page.part('replay').waitFor();
  assert.equal(await page.part('values-age').innerText(), 'Sample');
  await page.press('replay-play');
  await page.part('replay-at').focus();
  await page.tab.keyboard.press('Home');
  while (host.posted.length < 2) await page.tab.waitForTimeout(20);
  assert.deepEqual(host.posted[0].path, 'replay');
  assert.equal(host.posted[0].body.playing, true);
  const moved = host.posted.find(({ body }) => 'at' in body);
  assert.ok(moved && Math.abs(moved.body.at - begin) < 1000, JSON.stringify(host.posted));
  await page.openView('frames');
  await page.says(/capture/i);
});

/** @param {number} id @returns {import('../../../tools/page/web/app/feed/messages.js').Frame} */
function frameOf(id) {
  return { id, at: Date.now(), beforeMs: 1, way: 'request', text: `request ${id}`, bytes: '01', bad: false,
    elapsedMs: null };
}

playedTest('where frames went by that nobody asked for, a row says so and stays', (host) => {
  let asked = 0;
  host.answers.frames = () => {
    asked += 1;
    return { frames: asked > 2 ? [] : [frameOf(asked * 1000)], missed: asked === 2 ? 70 : 0 };
  };
}, async (page) => {
  await page.openView('frames');
  await page.part('frame').filter({ hasText: 'request 2000' }).waitFor();
  await page.tab.waitForResponse((answer) => answer.url().includes('/frames'));
  const rows = await page.part('frame').evaluateAll((all) => all
    .map((row) => ({ id: Number(/** @type {HTMLElement} */ (row).dataset.id), text: row.textContent ?? '' }))
    .sort((a, b) => a.id - b.id).slice(0, 3));
  assert.match(rows[0].text, /request 1000/);
  assert.match(rows[1].text, /missed.*at least 70 frames went by here/);
  assert.match(rows[2].text, /request 2000/);
});

playedTest('a capture that holds less than a minute says how much', (host) => {
  host.headers['capture.pcapng'] = { 'Covered-Ms': '5400' };
}, async (page, host) => {
  await page.openView('frames');
  await page.press('capture');
  await page.says(/holds the last 5 s only/);
  host.headers = {};
  await page.press('capture');
  await page.says(/last minute was saved/);
});

playedTest('without the program no value is good, for the filter too', () => {}, async (page, host, watch) => {
  watch.expect(/ERR_CONNECTION_REFUSED/);
  await page.part('only-bad').check();
  await page.says(/^0 of 2 variables$/);
  host.stop();
  await page.hasLost();
  await page.says(/^2 variables$/);
  await page.part('only-bad').uncheck();
  await page.filter('good');
  await page.says(/^0 of 2 variables$/);
  await page.filter('unknown speed');
  await page.says(/^1 of 2 variables$/);
});
