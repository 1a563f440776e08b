// The bridge's side: its state and its log.

import {setText} from './dom.js';
import {Lines} from './lines.js';

export class Bridge {
  #root;
  #log;

  constructor(root) {
    this.#root = root;
    const list = root.querySelector('#log');
    this.#log = new Lines(list);
    const details = root.querySelector('#details');
    details.addEventListener('change', () => {
      list.classList.toggle('brief', !details.checked);
      list.scrollTop = list.scrollHeight;
    });
  }

  show(state) {
    const pill = this.#root.querySelector('[data-shows="bridge"]');
    pill.dataset.state = state.running ? 'good' : 'off';
    const ended = state.exitCode === null ? 'not running' : `ended with ${state.exitCode}`;
    setText(pill, state.running ? 'running' : ended);
    this.#root.querySelector('[data-do="start-bridge"]').disabled = state.running;
    this.#root.querySelector('[data-do="stop-bridge"]').disabled = !state.running;
  }

  add({at, level, text}) {
    this.#log.add({at, tag: level, kind: level.toLowerCase(), text});
  }
}
