// What a page does besides being read. Each page comes whole from the server.

import { post, remove } from './api.js';
import { attempt } from './dom.js';
import { showDevices } from './devices.js';
import { showJob } from './job.js';
import { showJobs } from './jobs.js';
import { prepareKeys } from './keys.js';
import { prepareTemplate } from './template.js';
import { loadWords } from './text.js';
import { prepareUpload } from './upload.js';

// A program of this machine that opens the page hands over a word that counts once.
async function takeHandOver() {
  const match = /^#token=([\w-]+)$/.exec(location.hash);
  if (!match) return false;
  history.replaceState(null, '', location.pathname + location.search);
  await attempt(async () => {
    await post('session', { token: match[1] });
    const next = new URLSearchParams(location.search).get('next') ?? '/';
    location.replace(next.startsWith('/') && !next.startsWith('//') ? next : '/');
  });
  return true;
}

function prepareSignOut() {
  const button = document.getElementById('sign-out');
  if (!button) return;
  button.hidden = false;
  button.addEventListener('click', () =>
    attempt(async () => {
      await remove('session');
      location.assign('/login');
    }),
  );
}

async function start() {
  document.body.classList.add('live');
  if (await takeHandOver()) return;
  await loadWords();
  prepareKeys();
  prepareSignOut();
  prepareUpload();
  showJobs();
  showDevices(document.body.dataset.page === 'devices');
  showJob();
  prepareTemplate();
  document.body.dataset.ready = 'yes';
}

start();
