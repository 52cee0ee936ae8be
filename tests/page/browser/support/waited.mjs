// Waiting for what is seen to be as wanted.
import { patienceMs } from './program.mjs';

/**
 * Looks again and again until what is seen is as wanted.
 * @template Seen
 * @param {() => Promise<Seen>} look
 * @param {(seen: Seen) => boolean} wanted
 * @param {string} what
 */
export async function waited(look, wanted, what) {
  const until = Date.now() + patienceMs;
  let seen = await look();
  while (!wanted(seen)) {
    if (Date.now() > until) throw new Error(`${what}: ${JSON.stringify(seen)}`);
    await new Promise((resolve) => { setTimeout(resolve, 20); });
    seen = await look();
  }
}

/**
 * What hangs fails, so that what was started for it is ended.
 * @template Result
 * @param {Promise<Result>} work
 * @returns {Promise<Result>}
 */
export function inTime(work) {
  return new Promise((resolve, reject) => {
    const timer = setTimeout(() => reject(new Error('it did not end')), 4 * patienceMs);
    work.then(resolve, reject).finally(() => clearTimeout(timer));
  });
}
