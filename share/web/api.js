// Requests to the server's interface. Each fails with an Error whose message is for a person.

const root = '/api/v1/';

function formToken() {
  return document.querySelector('meta[name="csrf"]')?.content ?? '';
}

async function failureOf(response) {
  try {
    return (await response.json()).error.message;
  } catch {
    return `${response.status} ${response.statusText}`;
  }
}

async function send(method, path, body) {
  const headers = {};
  if (method !== 'GET') headers['X-CSRF-Token'] = formToken();
  if (body !== undefined) headers['Content-Type'] = 'application/json';
  const response = await fetch(root + path, {
    method,
    headers,
    body: body === undefined ? undefined : JSON.stringify(body),
    credentials: 'same-origin',
  });
  if (response.status === 401) {
    location.assign(`/login?next=${encodeURIComponent(location.pathname + location.search)}`);
  }
  if (!response.ok) throw new Error(await failureOf(response));
  return response.status === 204 ? null : response.json();
}

export const get = (path) => send('GET', path);
export const post = (path, body = {}) => send('POST', path, body);
export const remove = (path) => send('DELETE', path);

// A picture of a plate: the answer, or the milliseconds after which it can be asked for again.
export async function drawPlate(name, body) {
  const response = await fetch(`${root}templates/${name}/picture`, {
    method: 'POST',
    headers: { 'X-CSRF-Token': formToken(), 'Content-Type': 'application/json' },
    body: JSON.stringify(body),
    credentials: 'same-origin',
  });
  if (response.status === 429 || response.status === 503) {
    return { wait: 1000 * (Number(response.headers.get('Retry-After')) || 1) };
  }
  if (!response.ok) throw new Error(await failureOf(response));
  return { answer: await response.json() };
}

// Sends a form with a file; `onProgress` gets a share from 0 to 1. Only this old kind of request
// says how much of a body has gone.
export function upload(fields, file, onProgress) {
  return new Promise((resolve, reject) => {
    const form = new FormData();
    for (const [name, value] of Object.entries(fields)) if (value !== '') form.append(name, value);
    form.append('file', file, file.name);
    const request = new XMLHttpRequest();
    request.open('POST', `${root}jobs`);
    request.setRequestHeader('X-CSRF-Token', formToken());
    request.responseType = 'json';
    request.upload.addEventListener('progress', (event) => {
      if (event.lengthComputable && event.total > 0) onProgress(event.loaded / event.total);
    });
    request.addEventListener('load', () => {
      if (request.status === 201) resolve(request.response);
      else reject(new Error(request.response?.error?.message ?? `${request.status}`));
    });
    request.addEventListener('error', () => reject(new Error('The server can not be reached.')));
    request.send(form);
  });
}

// Calls `onEvent(kind, data)` for all that changes, for as long as the page is open. The browser
// connects again by itself and goes on after the last event it had.
export function listen(onEvent, onConnection) {
  const source = new EventSource(`${root}events`);
  for (const kind of ['state', 'progress', 'message', 'changed']) {
    source.addEventListener(kind, (event) => onEvent(kind, JSON.parse(event.data)));
  }
  source.addEventListener('open', () => onConnection(true));
  source.addEventListener('error', () => onConnection(false));
  return source;
}
