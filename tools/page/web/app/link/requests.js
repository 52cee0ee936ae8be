// Asks the program over HTTP. Every request carries the token; an answer that is not a success is an AskError
// with the program's own words.
import { token } from './token.js';

const BASE = '/api/v1/';

export class AskError extends Error {
  /**
   * @param {number} status 0: the program could not be reached
   * @param {string} text
   */
  constructor(status, text) {
    super(text);
    this.status = status;
  }
}

/** @param {Response} answer */
async function words(answer) {
  try {
    const body = await answer.json();
    if (typeof body.error === 'string') return body.error;
  } catch { /* the status says enough */ }
  return `the program answered ${answer.status}`;
}

/**
 * @param {string} what
 * @param {RequestInit} options
 */
async function ask(what, options) {
  const headers = new Headers(options.headers);
  headers.set('Authorization', `Bearer ${token()}`);
  /** @type {Response} */
  let answer;
  try {
    answer = await fetch(BASE + what, { ...options, headers, cache: 'no-store', credentials: 'omit' });
  } catch {
    throw new AskError(0, 'the program does not answer');
  }
  if (!answer.ok) throw new AskError(answer.status, await words(answer));
  return answer;
}

/**
 * @param {string} what
 * @param {Record<string, string|number>} [query]
 */
function withQuery(what, query = {}) {
  const items = new URLSearchParams();
  for (const [name, value] of Object.entries(query)) items.set(name, String(value));
  const text = items.toString();
  return text === '' ? what : `${what}?${text}`;
}

/**
 * GET as JSON.
 * @template T
 * @param {string} what
 * @param {Record<string, string|number>} [query]
 * @returns {Promise<T>}
 */
export async function get(what, query) {
  const answer = await ask(withQuery(what, query), {});
  return answer.json();
}

/**
 * GET as a file's bytes, and what time they cover where that is less than was asked for.
 * @param {string} what
 * @param {Record<string, string|number>} [query]
 * @returns {Promise<{file: Blob, coveredMs: number|null}>}
 */
export async function getFile(what, query) {
  const answer = await ask(withQuery(what, query), {});
  const covered = answer.headers.get('Covered-Ms');
  return { file: await answer.blob(), coveredMs: covered === null ? null : Number(covered) };
}

/**
 * POST of JSON, answered with JSON.
 * @template T
 * @param {string} what
 * @param {object} body
 * @returns {Promise<T>}
 */
export async function post(what, body) {
  const answer = await ask(what, {
    method: 'POST', headers: { 'Content-Type': 'application/json' }, body: JSON.stringify(body),
  });
  return answer.json();
}
