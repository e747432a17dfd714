// A job's own view: its state as it changes, its pages, and what a person may do with it.

import { get, listen, post, remove } from './api.js';
import { announce, ask, attempt, element } from './dom.js';
import { stateOf, stateText } from './jobs.js';
import { clean, decimal, t, time } from './text.js';
import { Viewer } from './viewer.js';

// Texts of the actions: the button, and the question before one that can't be taken back.
const actions = {
  release: { text: 'Release' },
  hold: { text: 'Hold' },
  accept: {
    text: 'It came out',
    question: 'Did job {0} come out whole? It counts as done then.',
  },
  reprint: { text: 'Print again…' },
  move: { text: 'Move…' },
  priority: { text: 'Priority…' },
  cancel: { text: 'Cancel', question: 'End job {0}? What has come out already stays.', isGrave: true },
  remove: {
    text: 'Remove',
    question: 'Remove job {0} with its file, its pages and its story? This can not be undone.',
    isGrave: true,
  },
};

function field(label, input) {
  return element('label', {}, element('span', {}, label), input);
}

async function deviceField(job) {
  const { devices } = await get('devices');
  return field(
    t('Device'),
    element(
      'select',
      { name: 'device' },
      ...devices.map(({ name }) =>
        element('option', { value: name, selected: name === job.device }, clean(name)),
      ),
    ),
  );
}

// What the person chose, or nothing if the dialog was left.
async function choose(name, job, chosenPages) {
  const common = { cancel: t('Back'), accept: t(actions[name].text.replace('…', '')) };
  if (name === 'move') {
    return ask({ ...common, title: t('Move job {0}', job.id), fields: [await deviceField(job)] });
  }
  if (name === 'priority') {
    const input = element('input', {
      name: 'priority', type: 'number', min: 1, max: 100, required: true, value: job.priority,
    });
    return ask({
      ...common,
      title: t('Priority of job {0}', job.id),
      text: t('From 1, the last, to 100, the first.'),
      fields: [field(t('Priority'), input)],
    });
  }
  if (name === 'reprint') {
    const input = element('input', {
      name: 'pages', value: chosenPages, placeholder: '1-3,5', pattern: '[0-9, \\-]*', autocomplete: 'off',
    });
    return ask({
      ...common,
      title: t('Print job {0} again', job.id),
      text: t('Pages such as 1-3,5; all without any.'),
      fields: [field(t('Pages'), input)],
    });
  }
  if (!actions[name].question) return {};
  return ask({
    ...common,
    title: `${t(actions[name].text)}?`,
    text: t(actions[name].question, job.id),
    isGrave: actions[name].isGrave,
  });
}

class JobView {
  constructor(main) {
    this.id = Number(main.dataset.job);
    this.bar = document.getElementById('actions');
    this.lastEvent = 0;
    this.chosen = new Set();
  }

  async refresh() {
    const job = await get(`jobs/${this.id}`);
    const before = this.job;
    this.job = job;
    document.getElementById('state').replaceChildren(...stateOf(job));
    const message = document.getElementById('message');
    message.textContent = clean(job.message);
    message.hidden = job.message === '';
    for (const [name, value] of Object.entries({
      device: clean(job.device),
      priority: String(job.priority),
      submitted: time(job.submitted),
      started: time(job.started),
      ended: time(job.ended),
      attempts: String(job.attempts),
    })) {
      const place = document.querySelector(`[data-field="${name}"]`);
      if (place) place.textContent = value;
    }
    if (before?.actions.join() !== job.actions.join()) this.showActions();
    if (before && before.state !== job.state) announce(t('Job {0}: {1}', job.id, stateText(job)));
    if (!before || before.keptPages !== job.keptPages || before.state !== job.state) {
      await this.showPages();
    }
    await this.showStory();
  }

  showActions() {
    const focused = document.activeElement?.dataset?.action;
    this.bar.replaceChildren(
      ...Object.entries(actions)
        .filter(([name]) => this.job.actions.includes(name))
        .map(([name, { text, isGrave }]) =>
          element(
            'button',
            {
              type: 'button',
              'data-action': name,
              class: isGrave ? 'grave' : undefined,
              onclick: () => this.act(name),
            },
            t(text),
          ),
        ),
    );
    if (focused) this.bar.querySelector(`[data-action="${focused}"]`)?.focus();
  }

  act(name) {
    return attempt(async () => {
      const values = await choose(name, this.job, [...this.chosen].sort((a, b) => a - b).join(','));
      if (!values) return;
      if (name === 'remove') {
        await remove(`jobs/${this.id}`);
        location.assign('/');
        return;
      }
      if (name === 'priority') values.priority = Number(values.priority);
      if (name === 'reprint') values.pages = values.pages.replaceAll(' ', '');
      const answer = await post(`jobs/${this.id}/${name}`, values);
      if (name === 'reprint') {
        location.assign(`/jobs/${answer.id}`);
        return;
      }
      await this.refresh();
    });
  }

  async showStory() {
    const list = document.getElementById('story');
    for (;;) {
      const { events, more } = await get(`jobs/${this.id}/events?after=${this.lastEvent}&limit=1000`);
      if (this.lastEvent === 0) list.replaceChildren();
      for (const event of events) {
        this.lastEvent = event.number;
        if (event.kind === 'progress') continue;
        list.append(
          element(
            'li',
            { class: event.kind },
            element('time', { datetime: new Date(event.time).toISOString() }, time(event.time)),
            ' ',
            event.kind === 'state' ? t(event.text) : clean(event.text),
          ),
        );
      }
      if (!more) return;
    }
  }

  // The picture that is looked at stays as it is, unless the pages are others now.
  async showPages() {
    const pages = await get(`jobs/${this.id}/pages`);
    const reason = document.getElementById('no-pages');
    reason.textContent = pages.reason ? t(pages.reason) : '';
    reason.hidden = !pages.reason;
    document.getElementById('pages').hidden = pages.count === 0;
    if (pages.count === 0) return;
    const before = this.pages?.map((page) => page.stamp).join();
    this.pages = pages.pages.filter((page) => !page.reason);
    this.showThumbnails();
    if (before === this.pages.map((page) => page.stamp).join()) return;
    const asked = Number(new URLSearchParams(location.search).get('page')) || 1;
    const first = this.pages.find((page) => page.number === asked) ?? this.pages[0];
    if (!first) return;
    this.viewer ??= new Viewer(document.getElementById('viewer'), this.id);
    this.showPage(first);
  }

  showThumbnails() {
    const current = document.querySelector('#thumbnails a[aria-current]')?.dataset.page;
    const list = document.getElementById('thumbnails');
    const canReprint = this.job.actions.includes('reprint');
    list.replaceChildren(
      ...this.pages.map((page) => {
        const choice = element('input', { type: 'checkbox', 'aria-label': t('Choose page {0}', page.number) });
        choice.checked = this.chosen.has(page.number);
        choice.addEventListener('change', () => {
          if (choice.checked) this.chosen.add(page.number);
          else this.chosen.delete(page.number);
        });
        return element(
          'li',
          {},
          element(
            'a',
            {
              href: `?page=${page.number}`,
              'data-page': page.number,
              'aria-current': String(page.number) === current ? 'true' : undefined,
              onclick: (event) => {
                event.preventDefault();
                history.replaceState(null, '', `?page=${page.number}`);
                this.showPage(page);
              },
            },
            element('img', {
              src: `/api/v1/jobs/${this.id}/pages/${page.number}.png?width=128&stamp=${page.stamp}`,
              alt: '',
              loading: 'lazy',
            }),
            element('span', {}, t('Page {0}', page.number)),
          ),
          this.pages.length > 1 && canReprint ? choice : null,
        );
      }),
    );
  }

  showPage(page) {
    for (const link of document.querySelectorAll('#thumbnails a')) {
      if (Number(link.dataset.page) === page.number) link.setAttribute('aria-current', 'true');
      else link.removeAttribute('aria-current');
    }
    this.viewer.ink = '';
    this.viewer.show(page);
    document.getElementById('page-size').textContent = t(
      '{0} × {1} mm, {2} × {3} pixels', decimal(page.widthMm), decimal(page.heightMm), page.width, page.height,
    );
    this.showInks(page);
  }

  showInks(page) {
    const choice = (value, ...content) => {
      const input = element('input', { type: 'radio', name: 'ink', value });
      input.checked = value === '';
      input.addEventListener('change', () => this.viewer.setInk(value));
      return element('label', {}, input, ...content);
    };
    const inks = page.inks.map((ink, place) => {
      const swatch = element('span', { class: 'swatch', 'aria-hidden': 'true' });
      swatch.style.backgroundColor = ink.colour;
      const share =
        ink.coverage === undefined ? '' : ` ${decimal(ink.coverage * 100)} %`;
      return choice(String(place), swatch, element('bdi', {}, clean(ink.name)), share);
    });
    const cut = element('input', { type: 'checkbox' });
    cut.addEventListener('change', () => this.viewer.showCut(cut.checked));
    document.getElementById('inks').replaceChildren(
      element('legend', {}, t('Shown')),
      choice('', t('All inks')),
      ...inks,
      ...(page.cut ? [element('label', {}, cut, t('Cut lines'))] : []),
    );
  }
}

export function showJob() {
  const main = document.querySelector('main[data-job]');
  if (!main) return;
  const view = new JobView(main);
  let timer;
  const refresh = () => attempt(() => view.refresh());
  const soon = () => {
    clearTimeout(timer);
    timer = setTimeout(refresh, 250);
  };
  listen(
    (kind, event) => {
      if (kind === 'changed' || event.job === view.id) soon();
    },
    (isOpen) => {
      document.body.classList.toggle('offline', !isOpen);
      if (isOpen) soon();
    },
  );
}
