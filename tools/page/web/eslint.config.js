// What the linter looks for in the page: mistakes, and every way of making markup or code out of text.
import js from '@eslint/js';

const browser = [
  'AbortController', 'Blob', 'CSS', 'CustomEvent', 'Document', 'Element', 'Event', 'EventTarget', 'HTMLButtonElement',
  'HTMLCanvasElement', 'HTMLDialogElement', 'HTMLElement', 'HTMLFormElement', 'HTMLInputElement', 'HTMLOutputElement', 'HTMLSelectElement',
  'Headers',
  'IntersectionObserver', 'KeyboardEvent', 'MouseEvent', 'Node', 'PointerEvent', 'ResizeObserver', 'URL',
  'URLSearchParams', 'WebSocket', 'WheelEvent', 'cancelAnimationFrame', 'clearInterval', 'clearTimeout', 'console',
  'devicePixelRatio', 'document', 'fetch', 'getComputedStyle', 'history', 'localStorage', 'location', 'matchMedia',
  'performance', 'queueMicrotask', 'requestAnimationFrame', 'sessionStorage', 'setInterval', 'setTimeout', 'window',
];

const markup = ['innerHTML', 'outerHTML', 'insertAdjacentHTML', 'setHTMLUnsafe', 'createContextualFragment', 'srcdoc'];

export default [
  { ignores: ['node_modules/'] },
  js.configs.recommended,
  {
    files: ['app/**/*.js'],
    languageOptions: {
      ecmaVersion: 2022,
      sourceType: 'module',
      globals: Object.fromEntries(browser.map((name) => [name, 'readonly'])),
    },
    linterOptions: { reportUnusedDisableDirectives: 'error' },
    rules: {
      'no-restricted-properties': ['error', ...markup.map((property) => ({ property, message: 'Texts are shown with textContent.' })),
        { object: 'document', property: 'write', message: 'Texts are shown with textContent.' }],
      'no-console': 'error',
      'no-eval': 'error',
      'no-implied-eval': 'error',
      'no-new-func': 'error',
      'no-var': 'error',
      'prefer-const': 'error',
      eqeqeq: 'error',
      curly: ['error', 'multi-line'],
      'no-shadow': 'error',
      'no-param-reassign': 'error',
      'no-promise-executor-return': 'error',
      'no-self-compare': 'error',
      'no-unmodified-loop-condition': 'error',
      'no-unused-expressions': 'error',
      'consistent-return': 'error',
      'max-depth': ['error', 3],
      'max-lines': ['error', { max: 300 }],
      'max-len': ['error', { code: 120 }],
      complexity: ['error', 14],
    },
  },
];
