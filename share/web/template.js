// A template's form: the picture follows the typed values, with what there is to say beside the fields.

import { drawPlate } from './api.js';
import { element } from './dom.js';
import { clean, decimal, t } from './text.js';

const pause = 350; // milliseconds without a key before a picture is asked for

// The sentences of notes, which the page has, too, where no script runs.
function sentence({ code, value }) {
  const shown = clean(value);
  switch (code) {
    case 'not-text': return t('This is no text in UTF-8.');
    case 'control': return t('A line end, tab or other control character can not be engraved.');
    case 'too-long': return t('This is too long: at most {0} characters.', shown);
    case 'not-a-number': return t('Give a number, with a point, such as 2.5.');
    case 'no-name': return t('Give a name alone, without a folder.');
    case 'no-field': return t('The template has no such field.');
    case 'all-empty': return t('Fill in at least one field.');
    case 'squeezed': return t('The text needs {0} % of its room and is squeezed.', shown);
    case 'beyond': return t('The text needs {0} % of its room and goes beyond it.', shown);
    case 'missing-font': return t('The font {0} is missing; another one is used.', shown);
    case 'not-placed': return t('The plate has no room on the blank.');
    case 'refused': return t('It can not be drawn: {0}.', shown);
    case 'left-out': return t('Left out: {0}.', shown);
    default: return `${shown}.`;
  }
}

const faults = ['not-text', 'control', 'too-long', 'not-a-number', 'no-name', 'no-field', 'refused'];

class PlateForm {
  constructor(form, name) {
    this.form = form;
    this.name = name;
    this.place = document.getElementById('picture');
    this.state = document.getElementById('picture-state');
    this.list = document.getElementById('plate-notes');
    this.fields = new Map(
      [...form.querySelectorAll('input[name^="value."]')].map((input) => [
        input.name.slice('value.'.length),
        input,
      ]),
    );
    this.isBusy = false;
    this.isAsked = false;
  }

  values() {
    return Object.fromEntries([...this.fields].map(([name, input]) => [name, input.value]));
  }

  soon() {
    this.place.classList.add('stale');
    clearTimeout(this.timer);
    this.timer = setTimeout(() => this.draw(), pause);
  }

  // One at a time: while one is drawn, the last values that are typed wait.
  async draw() {
    if (this.isBusy) {
      this.isAsked = true;
      return;
    }
    this.isBusy = true;
    this.isAsked = false;
    const values = this.values();
    try {
      if (Object.values(values).every((value) => value === '')) {
        this.clear();
      } else {
        const blank = this.form.elements.blank.value;
        const { answer, wait } = await drawPlate(this.name, { values, blank });
        if (wait) setTimeout(() => this.draw(), wait);
        else this.show(answer);
      }
    } catch (error) {
      this.say(error.message);
    } finally {
      this.isBusy = false;
      if (this.isAsked) this.soon();
    }
  }

  clear() {
    this.showNotes([]);
    this.place.replaceChildren();
    this.place.classList.remove('stale');
    this.say(t('There is no picture yet.'));
  }

  show(answer) {
    this.showNotes(answer.notes);
    if (answer.picture === null) {
      this.say(t('There is no picture of it.'));
      return;
    }
    this.place.replaceChildren(
      element('img', {
        src: `data:image/png;base64,${answer.picture}`,
        alt: t('The plate with the values that are typed'),
      }),
    );
    this.place.classList.remove('stale');
    this.say(
      t('The picture shows what is typed: {0} × {1} mm.', decimal(answer.widthMm), decimal(answer.heightMm)),
    );
  }

  // A text that is the same is not read again.
  say(text) {
    if (this.state.textContent !== text) this.state.textContent = text;
  }

  showNotes(notes) {
    for (const [name, input] of this.fields) {
      const own = notes.filter((note) => note.field === name);
      const isFault = own.some((note) => faults.includes(note.code));
      if (isFault) input.setAttribute('aria-invalid', 'true');
      else input.removeAttribute('aria-invalid');
      document.getElementById(`${input.id}-note`).textContent = own.map(sentence).join(' ');
    }
    this.list.replaceChildren(
      ...notes
        .filter((note) => !this.fields.has(note.field))
        .map((note) => element('li', {}, sentence(note))),
    );
  }
}

// A template with a fault has no picture; one that was too busy is asked for once more.
function prepareSamples() {
  for (const picture of document.querySelectorAll('.sample img')) {
    const again = () => {
      if (picture.dataset.again) {
        picture.remove();
        return;
      }
      picture.dataset.again = 'yes';
      setTimeout(() => {
        picture.src = `${picture.src}?again`;
      }, 3000);
    };
    picture.addEventListener('error', again);
    if (picture.complete && picture.naturalWidth === 0) again();
  }
}

export function prepareTemplate() {
  prepareSamples();
  const form = document.getElementById('plate');
  const main = document.querySelector('main[data-template]');
  if (!form || !main) return;
  const plate = new PlateForm(form, main.dataset.template);
  form.addEventListener('input', (event) => {
    if (event.target.name === 'blank' || event.target.name.startsWith('value.')) plate.soon();
  });
  form.addEventListener('submit', (event) => {
    if (event.submitter?.value === 'print') return;
    event.preventDefault();
    clearTimeout(plate.timer);
    plate.draw();
  });
  if (!document.querySelector('#picture img')) plate.draw();
}
