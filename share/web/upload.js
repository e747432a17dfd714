// Bringing files: by the form's button, or dropped anywhere on the page.

import { upload } from './api.js';
import { announce, attempt, element } from './dom.js';
import { clean, t } from './text.js';

export function prepareUpload() {
  const form = document.getElementById('upload');
  if (!form) return;
  form.hidden = false;
  const input = form.querySelector('input[type="file"]');
  const list = document.getElementById('uploads');

  async function bring(file) {
    const progress = element('progress', { max: 1, value: 0, 'aria-label': clean(file.name) });
    const line = element('li', {}, element('bdi', {}, clean(file.name)), ' ', progress);
    list.append(line);
    const fields = Object.fromEntries(
      [...new FormData(form)].filter(([name, value]) => name !== 'file' && typeof value === 'string'),
    );
    try {
      const job = await upload(fields, file, (share) => {
        progress.value = share;
      });
      progress.remove();
      line.append(element('a', { href: `/jobs/${job.id}` }, t('Job {0}', job.id)));
      announce(t('{0} is job {1}', clean(job.title), job.id));
      document.dispatchEvent(new Event('job-added'));
    } catch (error) {
      progress.remove();
      line.classList.add('failed');
      line.append(error.message);
      announce(t('{0} was not taken: {1}', clean(file.name), error.message), true);
    }
  }

  // One after the other: a slow line does not bring two at once any sooner.
  const bringAll = (files) =>
    attempt(async () => {
      for (const file of files) await bring(file);
    });

  form.addEventListener('submit', (event) => {
    event.preventDefault();
    const files = [...input.files];
    if (files.length === 0) input.click();
    else bringAll(files).then(() => form.reset());
  });
  let depth = 0;
  const hasFiles = (event) => event.dataTransfer?.types.includes('Files');
  const mark = () => form.classList.toggle('drop', depth > 0);
  document.addEventListener('dragenter', (event) => {
    if (!hasFiles(event)) return;
    depth += 1;
    mark();
  });
  document.addEventListener('dragleave', (event) => {
    if (!hasFiles(event)) return;
    depth = Math.max(0, depth - 1);
    mark();
  });
  document.addEventListener('dragover', (event) => {
    if (hasFiles(event)) event.preventDefault();
  });
  document.addEventListener('drop', (event) => {
    if (!hasFiles(event)) return;
    event.preventDefault();
    depth = 0;
    mark();
    bringAll([...event.dataTransfer.files]);
  });
}
