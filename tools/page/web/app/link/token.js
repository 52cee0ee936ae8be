// The token of this start of the program: taken from the fragment of the address, kept for this tab, never shown.

const KEY = 'token';

/**
 * The token in a fragment such as `#token=0123…`, or null when there is none.
 * @param {string} fragment
 * @returns {string|null}
 */
export function tokenOf(fragment) {
  const found = /^#token=([0-9A-Za-z]{16,128})$/.exec(fragment);
  return found ? found[1] : null;
}

/** Takes the token out of the address bar; true when there was one. */
export function takeToken() {
  const found = tokenOf(location.hash);
  if (found === null) return false;
  sessionStorage.setItem(KEY, found);
  history.replaceState(null, '', location.pathname + location.search);
  return true;
}

/** The token, empty when the page was opened without one. */
export function token() {
  return sessionStorage.getItem(KEY) ?? '';
}
