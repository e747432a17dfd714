// Texts, numbers and times in the page's language. The key of a text is its English form.

let words = {};
const language = document.documentElement.lang || 'en';

export async function loadWords() {
  if (language === 'en') return;
  try {
    words = await (await fetch('/static/german.json')).json();
  } catch {
    words = {};
  }
}

// A text with {0}, {1} ... replaced.
export function t(text, ...values) {
  return (words[text] ?? text).replace(/\{(\d)\}/g, (_, place) => values[Number(place)] ?? '');
}

const number = new Intl.NumberFormat(language, { maximumFractionDigits: 1 });

export const decimal = (value) => number.format(value);

// As the server writes it, so that a page looks the same before and after its scripts ran.
export function time(milliseconds) {
  if (!(milliseconds > 0)) return '';
  const moment = new Date(milliseconds);
  const two = (value) => String(value).padStart(2, '0');
  const day = [moment.getFullYear(), two(moment.getMonth() + 1), two(moment.getDate())].join('-');
  return `${day} ${two(moment.getHours())}:${two(moment.getMinutes())}`;
}

export function bytes(count) {
  let value = count;
  for (const unit of ['B', 'kB', 'MB', 'GB']) {
    if (value < 1000 || unit === 'GB') return `${number.format(value)} ${unit}`;
    value /= 1000;
  }
  return '';
}

// A title may hold characters that change the direction of what follows or are not seen at all.
// They are shown as numbers, as everywhere in this system.
export function clean(text) {
  const unsafe =
    // eslint-disable-next-line no-control-regex
    /[\u0000-\u001f\u007f-\u009f\u00ad\u061c\u200b\u200e\u200f\u2028-\u202e\u2060-\u206f\ufeff]|[\u{e0000}-\u{e007f}]/gu;
  return String(text).replace(unsafe, (character) => {
    const code = character.codePointAt(0);
    if (code < 0x80) return `\\x${code.toString(16).padStart(2, '0')}`;
    if (code < 0x10000) return `\\u${code.toString(16).padStart(4, '0')}`;
    return `\\U${code.toString(16).padStart(8, '0')}`;
  });
}
