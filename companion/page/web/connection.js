// A page's connection to the program: a stream of events in, actions out, both with the session's token. The token is
// in the address after the "#", so no request line and no log contains it.

const token = location.hash.slice(1);
// Of this open tab, so that the program knows whose buttons to release when it is closed.
const tab = crypto.randomUUID();
const retryMs = 1000;

export const hasToken = token !== '';

export function request(path, options = {}) {
  return fetch(path, {...options, headers: {...options.headers, 'X-Page-Token': token, 'X-Page-Tab': tab}});
}

export async function fetchJson(path) {
  const reply = await request(path);
  if (!reply.ok) {
    throw new Error(await reply.text());
  }
  return reply.json();
}

// Cuts a stream of server-sent events into {kind, data}; gives back what is still incomplete.
export function takeEvents(text, onEvent) {
  const blocks = text.split('\n\n');
  const rest = blocks.pop();
  for (const block of blocks) {
    const fields = Object.fromEntries(block.split('\n').map((line) => {
      const colon = line.indexOf(': ');
      return [line.slice(0, colon), line.slice(colon + 2)];
    }));
    if (fields.event) {
      handOver(onEvent, fields);
    }
  }
  return rest;
}

// An error in the page itself must not look like the end of the program.
function handOver(onEvent, fields) {
  try {
    onEvent(fields.event, JSON.parse(fields.data));
  } catch (fault) {
    reportError(fault);
  }
}

class Refusal extends Error {}

async function readStream(onEvent, onOpen) {
  const reply = await request('/api/events');
  if (!reply.ok) {
    throw new Refusal((await reply.text()).trim());
  }
  onOpen();
  const reader = reply.body.pipeThrough(new TextDecoderStream()).getReader();
  let rest = '';
  for (let piece = await reader.read(); !piece.done; piece = await reader.read()) {
    rest = takeEvents(rest + piece.value, onEvent);
  }
}

// Listens forever. Calls `onLink(true)` when events begin to arrive and `onLink(false)` when they end, with the
// program's reason if it refuses.
export async function listen(onEvent, onLink) {
  for (;;) {
    let refusal = '';
    try {
      await readStream(onEvent, () => onLink(true));
    } catch (failure) {
      // Without a refusal, the program has ended or restarts: the link shows both.
      refusal = failure instanceof Refusal ? failure.message : '';
    }
    onLink(false, refusal);
    await new Promise((resolve) => setTimeout(resolve, retryMs));
  }
}

// One action after the other, since two requests could overtake each other, and a release must not come before its
// press. `join(last, action)` says whether it has added an action to the last one that still waits.
export class Actions {
  #waiting = [];
  #busy = false;
  #onFailure;
  #join;

  constructor(onFailure, join = () => false) {
    this.#onFailure = onFailure;
    this.#join = join;
  }

  send(action) {
    const last = this.#waiting.at(-1);
    if (!last || !this.#join(last, action)) {
      this.#waiting.push({...action});
    }
    this.#run();
  }

  async #run() {
    if (this.#busy) {
      return;
    }
    this.#busy = true;
    while (this.#waiting.length > 0) {
      await this.#post(this.#waiting.shift());
    }
    this.#busy = false;
  }

  async #post(action) {
    try {
      const reply = await request('/api/action', {
        method: 'POST',
        keepalive: true,
        headers: {'Content-Type': 'application/json'},
        body: JSON.stringify(action),
      });
      if (!reply.ok) {
        this.#onFailure((await reply.text()).trim());
      }
    } catch {
      this.#onFailure('The program does not answer.');
    }
  }
}
