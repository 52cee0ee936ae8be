// What became of a write, in words.

/** @type {Record<string, {mood: 'good'|'warn'|'bad', words: string}>} */
export const OUTCOMES = {
  done: { mood: 'good', words: '✓ Done: the controller acknowledged it.' },
  refused: { mood: 'bad', words: '✕ Refused by the controller.' },
  'not sent': { mood: 'bad', words: '✕ Not sent: no byte of it left the host.' },
  unknown: { mood: 'warn', words: '? Unknown: sent and never answered. The controller may have carried it out.' },
  partial: { mood: 'warn', words: '◐ Partly: some elements were acknowledged, others were not.' },
};

/**
 * Why a variable cannot be written; empty when it can.
 * @param {import('../feed/messages.js').Status|null} status
 * @param {import('../feed/messages.js').Variable} variable
 * @param {boolean} live
 * @returns {string}
 */
export function deniedReason(status, variable, live) {
  if (!live || !status) return 'The page has lost the program: nothing can be written.';
  if (status.replay) return 'A recording cannot be written.';
  if (!status.writes.allowed) return 'Writes are off: the program was started without --allow-writes.';
  if (!variable.writable) return `${variable.address} is not among the addresses that may be written.`;
  return '';
}
