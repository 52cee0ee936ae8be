// Pins outlive a reload: kept in the browser, by project.

/** @typedef {import('./store.js').Store} Store */

/** @param {string} project */
function key(project) {
  return `pins:${project}`;
}

/**
 * @param {string|null} text
 * @returns {string[]}
 */
function parsed(text) {
  try {
    const found = JSON.parse(text ?? '[]');
    return Array.isArray(found) ? found.filter((item) => typeof item === 'string') : [];
  } catch {
    return [];
  }
}

/** @param {Store} store */
export function keepPins(store) {
  /** @type {string|null} */
  let project = null;
  store.on(['variables'], () => {
    if (!store.status || store.status.project === project) return;
    project = store.status.project;
    const pins = parsed(localStorage.getItem(key(project)));
    store.setPins(pins.filter((address) => store.variableAt(address) !== null));
  });
  store.on(['pins'], () => {
    if (project !== null) localStorage.setItem(key(project), JSON.stringify(store.pins));
  });
}
