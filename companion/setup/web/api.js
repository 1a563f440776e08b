// What the page asks of the program.

import {request} from './connection.js';

function post(path, value) {
  return request(path, {method: 'POST', headers: {'Content-Type': 'application/json'}, body: JSON.stringify(value)});
}

// Carries out an action; gives an empty text, or why it failed.
export async function act(action) {
  try {
    const reply = await post('/api/action', action);
    return reply.ok ? '' : (await reply.text()).trim();
  } catch {
    return 'The program does not answer.';
  }
}

export async function remarksOn(command) {
  const reply = await post('/api/remarks', {command});
  return reply.ok ? reply.json() : [];
}
