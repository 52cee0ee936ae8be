// What the linter looks for in the page's tests and in what measures it: as in the page itself, but
// their texts go to a terminal, and what is handed to the browser knows its names.
import page from '../../tools/page/web/eslint.config.js';

const names = [
  'AbortController', 'Buffer', 'MutationObserver', 'OffscreenCanvas', 'URL', 'URLSearchParams', 'WebSocket',
  'clearInterval', 'clearTimeout', 'console', 'document', 'fetch', 'getComputedStyle', 'location',
  'performance', 'process', 'requestAnimationFrame', 'sessionStorage', 'setInterval', 'setTimeout', 'window',
];

/** @type {any[]} */
const parts = page;

export default parts.map((part) => (part.files ? {
  ...part,
  files: ['**/*.mjs', '**/*.js'],
  languageOptions: { ...part.languageOptions, globals: Object.fromEntries(names.map((name) => [name, 'readonly'])) },
  rules: { ...part.rules, 'no-console': 'off' },
} : part));
