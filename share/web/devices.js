// The devices with what they work on.

import { get, listen } from './api.js';
import { attempt, element } from './dom.js';
import { clean, t } from './text.js';

function card(device) {
  const works = device.state === 'working';
  const waits = element(
    'a',
    { href: `/jobs?device=${encodeURIComponent(device.name)}` },
    t('Waiting: {0}', device.waiting),
  );
  return element(
    'li',
    { class: `device device-${works ? 'working' : 'idle'}` },
    element('h3', {}, element('bdi', {}, clean(device.name))),
    element('span', { class: 'way' }, t(device.way)),
    element(
      'span',
      { class: 'doing' },
      works
        ? element('a', { href: `/jobs/${device.job}` }, t('Job {0}', device.job))
        : t('idle'),
      works
        ? element('progress', { max: 100, value: device.percent, 'aria-label': t('Progress') })
        : null,
    ),
    waits,
  );
}

export function showDevices(isAlone) {
  const list = document.querySelector('ul.devices');
  if (!list) return;
  let timer;
  const refresh = () =>
    attempt(async () => {
      const { devices } = await get('devices');
      if (!list.contains(document.activeElement)) list.replaceChildren(...devices.map(card));
    });
  const soon = () => {
    clearTimeout(timer);
    timer = setTimeout(refresh, 400);
  };
  refresh();
  if (isAlone) {
    listen((kind) => kind !== 'message' && soon(), (isOpen) => {
      document.body.classList.toggle('offline', !isOpen);
      if (isOpen) soon();
    });
  } else {
    document.addEventListener('shop-changed', soon);
  }
}
