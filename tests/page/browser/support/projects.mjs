// Project files made for one test, in a folder of their own that goes with this process.
import { mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

const folder = mkdtempSync(join(tmpdir(), 'tavmir-page-'));
process.on('exit', () => rmSync(folder, { recursive: true, force: true }));

/** @param {string} name of the file @param {object} content @returns {string} its place */
export function projectFile(name, content) {
  const file = join(folder, name);
  writeFileSync(file, JSON.stringify(content));
  return file;
}

/**
 * As many words as said, Many.Word[0] and so on; the first of them count ten times a second.
 * @param {number} words
 * @param {number} moving
 */
export function manyWords(words, moving) {
  return projectFile(`many-${words}-${moving}.json`, {
    labels: [{ name: 'Many', variables: [
      { name: 'Word', type: 'word', address: 0, array: { bounds: [[0, words - 1]] } },
    ] }],
    polled: [{ address: 'Many.Word', format: 'unsigned' }],
    signals: Array.from({ length: moving }, (_, i) => (
      { address: `Many.Word[${i}]`, signal: 'counter', low: 0, high: 60000, step: 1, periodMs: 100 })),
  });
}

/** What a controller, or who wrote the project, may put where a browser looks for markup. */
export const markup = '<img src=x onerror="document.title=1"><b>bold</b>';
/** A name has no "=" in it. */
export const markupName = '<b><script>alert(1)<script>&amp;';

export function hostileTexts() {
  return projectFile('<i>hostile<i>.json', {
    labels: [{ name: 'Main', variables: [
      { name: 'Text', type: 'text', address: 0, words: 40 },
      { name: markupName, type: 'text', address: 1024, words: 40 },
    ] }],
    polled: [{ address: 'Main.Text', format: 'text' },
      { address: `Main.${markupName}`, format: 'text', name: '<u>named<u>' }],
    initial: [{ address: 'Main.Text', value: markup },
      { address: `Main.${markupName}`, value: '"><svg onload=alert(1)>' }],
  });
}
