// The simulator's side: its state, its switches, and what it received.

import {setText} from './dom.js';
import {Lines} from './lines.js';

const switchStates = {
  'battery': 'battery', 'refuse-sessions': 'refusing', 'silence-module': 'silent', 'fail-registrations': 'failing',
};
const kinds = {rpn: 'command', code: 'code', event: 'event', command: 'module', exception: 'error', unchanged: 'unchanged'};

// "rpn (>K:AP_MASTER)" as the kind "command" and its text.
export function receivedParts(text) {
  const blank = text.indexOf(' ');
  const kind = kinds[text.slice(0, blank)];
  return kind ? {kind, text: text.slice(blank + 1)} : {kind: 'session', text};
}

export class Simulator {
  #root;
  #received;
  #announcer;

  constructor(root, send, announcer) {
    this.#root = root;
    this.#announcer = announcer;
    this.#received = new Lines(root.querySelector('#received'));
    for (const input of root.querySelectorAll('[data-switch]')) {
      input.addEventListener('change', () => send({do: input.dataset.switch, on: input.checked}));
    }
    const slider = root.querySelector('#cockpit-light');
    slider.addEventListener('input', () => {
      this.#showLight(Number(slider.value));
      send({do: 'light', percent: Number(slider.value)});
    });
  }

  show(state) {
    this.#pill('running', state.running, state.real ? 'this machine’s' : state.running ? 'running' : 'not running');
    this.#pill('session', state.connected, state.connected ? 'session open' : 'no session');
    this.#root.querySelector('#simulator-controls').hidden = state.real;
    this.#root.querySelector('header .buttons').hidden = state.real;
    this.#root.querySelector('#simulator-real').hidden = !state.real;
    for (const input of this.#root.querySelectorAll('[data-switch]')) {
      input.checked = state[switchStates[input.dataset.switch]];
    }
    const slider = this.#root.querySelector('#cockpit-light');
    if (document.activeElement !== slider) {
      slider.value = state.light;
      this.#showLight(state.light);
    }
    this.#enable('start-simulator', !state.running);
    for (const action of ['quit-simulator', 'crash-simulator']) {
      this.#enable(action, state.running);
    }
    this.#enable('drop-sessions', state.connected);
  }

  // Gives what came, with how often in a row.
  receive({at, text}) {
    const parts = receivedParts(text);
    const count = this.#received.add({at, tag: parts.kind, kind: parts.kind, text: parts.text});
    if (parts.kind === 'command' || parts.kind === 'event') {
      this.#announcer.say(`Simulator received ${parts.text}${count > 1 ? `, ${count} times` : ''}`);
    }
    return {at, ...parts, count};
  }

  #showLight(percent) { setText(this.#root.querySelector('#cockpit-light-value'), `${percent} %`); }

  #enable(action, enabled) { this.#root.querySelector(`[data-do="${action}"]`).disabled = !enabled; }

  #pill(name, on, text) {
    const pill = this.#root.querySelector(`[data-shows="${name}"]`);
    pill.dataset.state = on ? 'good' : 'off';
    setText(pill, text);
  }
}
