// The studio's JSON API. The page's requests carry the token in the cookie the server set when
// the page was first asked for.

export class ApiError extends Error {
  constructor(status, body) {
    super(body?.refused?.message ?? body?.error ?? `the studio answered ${status}`);
    this.status = status;
    this.body = body;
  }
  get refused() {
    return this.body?.refused ?? null;
  }
}

async function request(path, options = {}) {
  const response = await fetch(path, { credentials: 'same-origin', ...options });
  const text = await response.text();
  let body = null;
  try {
    body = text ? JSON.parse(text) : null;
  } catch {
    body = { error: text };
  }
  if (!response.ok) throw new ApiError(response.status, body);
  return body;
}

export const get = (path) => request(path);

export async function getText(path) {
  const response = await fetch(path, { credentials: 'same-origin' });
  if (!response.ok) throw new ApiError(response.status, { error: await response.text() });
  return response.text();
}

export const post = (path, body = {}) =>
  request(path, {
    method: 'POST',
    headers: { 'Content-Type': 'application/json' },
    body: JSON.stringify(body),
  });

export const modelPath = (id, what = '') => `/api/models/${id}${what ? '/' + what : ''}`;
