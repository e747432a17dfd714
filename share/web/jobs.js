// The table of jobs: made anew from the server's list whenever something changed.

import { get, listen } from './api.js';
import { announce, attempt, element } from './dom.js';
import { clean, t, time } from './text.js';

export const waiting =
  'queued,held,interpreting,ready,delivering,failed,uncertain,quarantined';

export function stateText(job) {
  const runs = job.state === 'interpreting' || job.state === 'delivering';
  return runs ? `${t(job.state)} ${job.percent} %` : t(job.state);
}

export function stateOf(job) {
  const runs = job.state === 'interpreting' || job.state === 'delivering';
  const shown = element('span', { class: `state state-${job.state}` }, t(job.state));
  if (!runs) return [shown];
  return [
    shown,
    element('progress', { max: 100, value: job.percent, 'aria-label': t('Progress') }),
    element('span', { class: 'percent' }, `${job.percent} %`),
  ];
}

function thumbnail(job) {
  const box = element('span', { class: 'sheet' });
  if (job.keptPages) {
    const picture = element('img', {
      src: `/api/v1/jobs/${job.id}/pages/1.png?width=128`,
      alt: '',
      loading: 'lazy',
    });
    picture.addEventListener('error', () => picture.remove());
    box.append(picture);
  }
  return box;
}

function row(job) {
  const address = `/jobs/${job.id}`;
  const cell = (label, ...content) => element('td', { 'data-label': label }, ...content);
  return element(
    'tr',
    { 'data-job': job.id },
    element('td', { class: 'thumb' }, element('a', { href: address, tabindex: -1, 'aria-hidden': 'true' }, thumbnail(job))),
    element(
      'th',
      { scope: 'row' },
      element('a', { href: address }, element('bdi', {}, clean(job.title))),
      element('span', { class: 'number' }, ` ${t('Job {0}', job.id)}`),
      job.message ? element('span', { class: 'message' }, clean(job.message)) : null,
    ),
    cell(t('State'), ...stateOf(job)),
    cell(t('Owner'), element('bdi', {}, clean(job.owner))),
    cell(t('Device'), element('bdi', {}, clean(job.device))),
    cell(t('Priority'), String(job.priority)),
    cell(t('Pages'), job.pages > 0 ? String(job.pages) : ''),
    cell(t('Brought'), element('time', {}, time(job.submitted))),
  );
}

// Keeps what has the focus, and rows that did not change, so that nothing flickers.
function replaceRows(body, jobs, shown) {
  const old = new Map([...body.children].map((child) => [child.dataset.job, child]));
  const rows = jobs.map((job) => {
    const key = String(job.id);
    const text = JSON.stringify(job);
    if (shown.get(key) === text && old.has(key)) return old.get(key);
    const isFocused = old.get(key)?.contains(document.activeElement);
    const made = row(job);
    shown.set(key, text);
    if (isFocused) queueMicrotask(() => made.querySelector('th a').focus());
    return made;
  });
  body.replaceChildren(...rows);
}

export function showJobs() {
  const table = document.querySelector('table.jobs');
  if (!table) return;
  const body = table.tBodies[0];
  const shown = new Map();
  const query = table.dataset.query;
  let isAsked = false;
  let isBusy = false;

  async function refresh() {
    if (isBusy) {
      isAsked = true;
      return;
    }
    isBusy = true;
    isAsked = false;
    await attempt(async () => {
      const list = await get(`jobs?${query}`);
      replaceRows(body, list.jobs, shown);
      table.hidden = list.jobs.length === 0;
      const nothing = document.getElementById('no-jobs');
      if (nothing) nothing.hidden = list.jobs.length > 0;
      const total = document.getElementById('total');
      if (total) total.textContent = t('Jobs: {0}', list.total);
    });
    // Not more often than a person can see.
    setTimeout(() => {
      isBusy = false;
      if (isAsked) refresh();
    }, 250);
  }

  listen(
    (kind, event) => {
      if (kind === 'state') announce(t('Job {0}: {1}', event.job, t(event.text)));
      if (kind !== 'message') {
        refresh();
        document.dispatchEvent(new Event('shop-changed'));
      }
    },
    (isOpen) => {
      document.body.classList.toggle('offline', !isOpen);
      if (isOpen) refresh();
    },
  );
  document.addEventListener('job-added', refresh);
}
