// Small helpers around elements. Texts enter as text only.

/**
 * An element that index.html promises.
 * @template {HTMLElement} T
 * @param {string} id
 * @param {new () => T} type
 * @returns {T}
 */
export function element(id, type) {
  const found = document.getElementById(id);
  if (!(found instanceof type)) throw new Error(`the page has no ${type.name} "${id}"`);
  return found;
}

/**
 * @template {keyof HTMLElementTagNameMap} K
 * @param {K} tag
 * @param {Record<string, string>} [attributes] `class`, `data-test`, `role` …; `text` is the element's text
 * @param {...Node} children
 * @returns {HTMLElementTagNameMap[K]}
 */
export function make(tag, attributes = {}, ...children) {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (name === 'text') made.textContent = value;
    else made.setAttribute(name, value);
  }
  made.append(...children);
  return made;
}

/**
 * Sets a text when it is another one: an unchanged text costs no layout.
 * @param {Element} target
 * @param {string} text
 */
export function setText(target, text) {
  if (target.textContent !== text) target.textContent = text;
}

/**
 * @param {Element} target
 * @param {string} name
 * @param {string} value
 */
export function setAttribute(target, name, value) {
  if (target.getAttribute(name) !== value) target.setAttribute(name, value);
}

/**
 * @param {HTMLElement} target
 * @param {boolean} shown
 */
export function show(target, shown) {
  if (target.hidden === shown) target.hidden = !shown;
}

/**
 * Hands a file to the browser's downloads.
 * @param {Blob} blob
 * @param {string} name
 */
export function download(blob, name) {
  const url = URL.createObjectURL(blob);
  const link = make('a', { href: url, download: name });
  link.click();
  setTimeout(() => URL.revokeObjectURL(url), 10000);
}
