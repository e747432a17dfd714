// Shortcuts: single letters, never while something is typed, and listed by "?".

import { element } from './dom.js';
import { t } from './text.js';

const shortcuts = [
  ['g', 'Overview', () => location.assign('/')],
  ['j', 'All jobs', () => location.assign('/jobs')],
  ['t', 'Templates', () => location.assign('/templates')],
  ['d', 'Devices', () => location.assign('/devices')],
  ['u', 'Bring a file', () => document.querySelector('#upload input[type="file"]')?.focus()],
  ['/', 'Search', () => document.querySelector('input[name="text"]')?.focus()],
  ['v', 'Look at the page', () => document.querySelector('.viewer canvas')?.focus()],
  ['?', 'This list', showList],
];
const inViewer = [
  ['← ↑ → ↓', 'Move the page'],
  ['+ -', 'Nearer, farther'],
  ['0', 'Whole page'],
  ['1', 'Pixel for pixel'],
];

function showList() {
  const list = (rows) =>
    element(
      'dl',
      { class: 'keys' },
      ...rows.flatMap(([key, text]) => [
        element('dt', {}, element('kbd', {}, key)),
        element('dd', {}, t(text)),
      ]),
    );
  const dialog = element(
    'dialog',
    { 'aria-labelledby': 'keys-title' },
    element('h2', { id: 'keys-title' }, t('Keyboard')),
    list(shortcuts),
    element('h3', {}, t('In the picture of a page')),
    list(inViewer),
    element('form', { method: 'dialog' }, element('button', { class: 'main' }, t('Close'))),
  );
  dialog.addEventListener('close', () => dialog.remove());
  document.body.append(dialog);
  dialog.showModal();
}

export function prepareKeys() {
  const button = document.getElementById('keys');
  if (button) {
    button.hidden = false;
    button.addEventListener('click', showList);
  }
  document.addEventListener('keydown', (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey || event.defaultPrevented) return;
    if (event.target.closest('input, select, textarea, dialog')) return;
    const shortcut = shortcuts.find(([key]) => key === event.key);
    if (!shortcut) return;
    event.preventDefault();
    shortcut[2]();
  });
}
