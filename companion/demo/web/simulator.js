// The simulator's side: its state, its controls, and what it received. `send` takes a control as the simulator's console
// does: "battery off".

import {setText} from './dom.js';
import {Lines} from './lines.js';

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
    for (const button of root.querySelectorAll('button[data-sim]')) {
      button.addEventListener('click', () => send(button.dataset.sim));
    }
    for (const input of root.querySelectorAll('input[type=checkbox][data-sim]')) {
      input.addEventListener('change', () => send(`${input.dataset.sim} ${input.checked ? 'on' : 'off'}`));
    }
    const slider = this.#control('light');
    slider.addEventListener('input', () => {
      this.#showLight(slider.value);
      send(`light ${slider.value}`);
    });
  }

  // Names the controls as the program does. A switch and a slider are inside their label.
  label(controls) {
    for (const {word, label, help} of controls) {
      const control = this.#control(word);
      const place = control.closest('label') ?? control;
      place.title = help;
      setText(place.querySelector('span') ?? place, label);
    }
  }

  show(state) {
    this.#pill('running', state.running, state.real ? 'this machine’s' : state.running ? 'running' : 'not running');
    this.#pill('session', state.connected, state.connected ? 'session open' : 'no session');
    this.#root.querySelector('#simulator-controls').hidden = state.real;
    this.#root.querySelector('header .buttons').hidden = state.real;
    this.#root.querySelector('#simulator-real').hidden = !state.real;
    for (const input of this.#root.querySelectorAll('input[type=checkbox][data-sim]')) {
      input.checked = state.settings[input.dataset.sim] === 'on';
    }
    const slider = this.#control('light');
    if (document.activeElement !== slider) {
      slider.value = state.settings.light;
      this.#showLight(state.settings.light);
    }
    this.#control('start').disabled = state.running;
    this.#control('quit').disabled = !state.running;
    this.#control('die').disabled = !state.running;
    this.#control('drop').disabled = !state.connected;
  }

  // Returns the text with how often it came in a row.
  receive({at, text}) {
    const parts = receivedParts(text);
    const count = this.#received.add({at, tag: parts.kind, kind: parts.kind, text: parts.text});
    if (parts.kind === 'command' || parts.kind === 'event') {
      this.#announcer.say('command', `Simulator received ${parts.text}${count > 1 ? `, ${count} times` : ''}`);
    }
    return {at, ...parts, count};
  }

  #showLight(percent) { setText(this.#root.querySelector('#cockpit-light-value'), `${percent} %`); }

  #control(word) { return this.#root.querySelector(`[data-sim="${word}"]`); }

  #pill(name, on, text) {
    const pill = this.#root.querySelector(`[data-shows="${name}"]`);
    pill.dataset.state = on ? 'good' : 'off';
    setText(pill, text);
  }
}
