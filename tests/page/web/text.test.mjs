// Ages, lengths, numbers, qualities, bytes and CSV as text.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { after, age, length } from '../../../tools/page/web/app/text/ages.js';
import { csv } from '../../../tools/page/web/app/text/csv.js';
import { hexLines } from '../../../tools/page/web/app/text/hex.js';
import { bytes, counted, number } from '../../../tools/page/web/app/text/numbers.js';
import { look, valueText } from '../../../tools/page/web/app/text/qualities.js';

/** @typedef {import('../../../tools/page/web/app/feed/messages.js').ValueRow} ValueRow */

/**
 * @param {string} text
 * @param {import('../../../tools/page/web/app/feed/messages.js').Quality} quality
 * @param {string} reason
 * @returns {ValueRow}
 */
const valueRow = (text, quality, reason) => [0, text, Number(text), quality, reason, 1, 1];

test('an age grows from seconds to days', () => {
  const minute = 60000;
  assert.deepEqual([0, 999, 1000, 119999, 2 * minute, 125 * minute, 120 * minute, 49 * 60 * minute].map(age),
    ['< 1 s', '< 1 s', '1 s', '119 s', '2 min', '2 h 5 min', '2 h', '2 d']);
});

test('a length keeps three to four digits', () => {
  assert.deepEqual([0.42, 12.34, 250.4, 1500, 60000, 185000].map(length),
    ['0.42 ms', '12.3 ms', '250 ms', '1.500 s', '60.00 s', '3 min 5 s']);
});

test('what was not later by the clock has no time behind what was before', () => {
  assert.deepEqual([250.4, 0, -3600000, -5].map(after), ['+250 ms', '+0.00 ms', '', '']);
});

test('whole numbers stand in full, others in seven digits', () => {
  assert.deepEqual([4294967295, -1, 0.1 + 0.2, 3.14159265].map((value) => number(value)),
    ['4294967295', '-1', '0.3', '3.141593']);
});

test('bytes and counts', () => {
  assert.deepEqual([812, 3277, 1073741824].map(bytes), ['812 B', '3.2 KiB', '1.0 GiB']);
  assert.deepEqual([counted(1, 'address', 'addresses'), counted(2, 'address', 'addresses')],
    ['1 address', '2 addresses']);
});

test('what was never read is a dash, whatever was sent', () => {
  assert.equal(valueText(valueRow('0', 'never', 'no reply yet')), '–');
  assert.equal(valueText(valueRow('17', 'stale', 'link down')), '17');
});

test('without the program no value is good', () => {
  const row = valueRow('17', 'good', '');
  assert.equal(look(row, true).word, 'good');
  assert.equal(look(row, false).word, 'unknown');
  assert.match(look(row, false).reason, /lost the program; was good/);
});

test('every quality has a sign of its own', () => {
  /** @type {import('../../../tools/page/web/app/feed/messages.js').Quality[]} */
  const qualities = ['good', 'stale', 'bad', 'never', 'unconfirmed'];
  const signs = qualities.map((quality) => look(valueRow('1', quality, ''), true).sign);
  assert.equal(new Set(signs).size, qualities.length);
});

test('a text that a spreadsheet would take for a formula is not one in CSV', () => {
  assert.equal(csv([['=1+1', '+1', '-1', '@x', '\tx']]), "\"'=1+1\",\"'+1\",\"'-1\",\"'@x\",\"'\tx\"\r\n");
});

test('CSV keeps commas, quotes, line ends and negative numbers', () => {
  assert.equal(csv([['a,b', 'say "x"', 'two\nlines', -1, null]]), '"a,b","say ""x""","two\nlines",-1,\r\n');
});

test('bytes stand in lines of sixteen with offset and characters', () => {
  assert.equal(hexLines('41 42 00 7f'), `0000  41 42 00 7f${' '.repeat(36)}  AB..`);
  assert.equal(hexLines('00'.repeat(17)).split('\n')[1].slice(0, 8), '0010  00');
});
