// Something to press and to turn in place of a board.

import {element, setText} from './dom.js';
import {makePressable} from './press.js';

const buttons = [5, 7, 21, 22, 23, 41, 92, 96];
const knobs = [91, 93, 94, 95];

export class VirtualPanel {
  #labels = new Map();

  // `send` keeps the order of what it is given.
  constructor(board, send) {
    const toucher = (control) => ({
      press: () => send({do: 'press', board, control}), release: () => send({do: 'release', board, control}),
    });
    this.root = element('div', {'class': 'panel'});
    for (const control of buttons) {
      const button = this.#button(control, 'key', (name) => name);
      makePressable(button, toucher(control));
      this.root.append(button);
    }
    for (const control of knobs) {
      const left = this.#button(control, 'turn', (name) => `↺ ${name}`, 'counter-clockwise');
      const right = this.#button(control, 'turn', (name) => `${name} ↻`, 'clockwise');
      for (const [button, detents] of [[left, -1], [right, 1]]) {
        button.addEventListener('click', () => send({do: 'turn', board, control, detents, speed: 0}));
      }
      this.root.append(element('span', {'class': 'knob'}, left, right));
    }
    this.root.append(otherControl(toucher));
  }

  show(names) {
    for (const [control, labels] of this.#labels) {
      const name = names.get(control) ?? String(control);
      labels.forEach(({button, text, how}) => {
        setText(button, text(name.replace('number ', '')));
        button.setAttribute('aria-label', how ? `Turn ${name} ${how}` : `Press ${name}`);
      });
    }
  }

  #button(control, kind, text, how = '') {
    const button = element('button', {type: 'button', 'class': kind, 'data-control': control, 'data-how': how});
    this.#labels.set(control, [...this.#labels.get(control) ?? [], {button, text, how}]);
    return button;
  }
}

function otherControl(toucher) {
  const input = element('input', {type: 'number', min: '0', max: '65535', required: '', placeholder: 'number', 'aria-label': 'Number of another control'});
  const form = element('form', {'class': 'inline-form'}, input, element('button', {}, 'Press number'));
  form.addEventListener('submit', (event) => {
    event.preventDefault();
    const {press, release} = toucher(Number(input.value));
    press();
    release();
  });
  return form;
}
