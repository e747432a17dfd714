// Elements. Texts are set as texts, so that nothing foreign becomes markup.

export function element(name, attributes = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    if (value === undefined || value === null || value === false) continue;
    if (key.startsWith('on')) made.addEventListener(key.slice(2), value);
    else if (value === true) made.setAttribute(key, '');
    else made.setAttribute(key, value);
  }
  made.append(...children.filter((child) => child !== null && child !== undefined));
  return made;
}

// Says something to a person who listens, and shows it for a while.
export function announce(text, isError = false) {
  const place = document.getElementById(isError ? 'alert' : 'status');
  place.textContent = '';
  // A change to the same text would not be read.
  requestAnimationFrame(() => {
    place.textContent = text;
  });
  clearTimeout(place.timer);
  place.timer = setTimeout(() => {
    place.textContent = '';
  }, isError ? 20000 : 8000);
}

// Runs something a person asked for, and shows how it failed.
export async function attempt(work) {
  try {
    return await work();
  } catch (error) {
    announce(error.message, true);
    return undefined;
  }
}

// Asks by a dialog. Resolves to the fields of its form, or to nothing if it was left.
export function ask({ title, text, fields = [], accept, cancel, isGrave = false }) {
  return new Promise((resolve) => {
    const form = element(
      'form',
      { method: 'dialog' },
      element('h2', { id: 'dialog-title' }, title),
      text ? element('p', {}, text) : null,
      ...fields,
      element(
        'div',
        { class: 'buttons' },
        element('button', { value: 'cancel', formnovalidate: true }, cancel),
        element('button', { value: 'accept', class: isGrave ? 'grave' : 'main' }, accept),
      ),
    );
    const dialog = element('dialog', { 'aria-labelledby': 'dialog-title' }, form);
    dialog.addEventListener('close', () => {
      const isAccepted = dialog.returnValue === 'accept';
      const values = Object.fromEntries(new FormData(form));
      dialog.remove();
      resolve(isAccepted ? values : undefined);
    });
    document.body.append(dialog);
    dialog.returnValue = 'cancel';
    dialog.showModal();
  });
}
