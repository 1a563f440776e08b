// Something to press and to turn in place of a board.

import {element, setText} from './dom.js';

const buttons = [5, 7, 21, 22, 23, 41, 92, 96];
const knobs = [91, 93, 94, 95];

export class VirtualPanel {
  #labels = new Map();

  constructor(board, carryOut) {
    const press = (control) => this.#press(carryOut, board, control);
    this.root = element('div', {'class': 'panel'});
    for (const control of buttons) {
      this.root.append(this.#button(control, 'key', () => press(control), (name) => name));
    }
    for (const control of knobs) {
      const turn = (detents) => carryOut({do: 'turn', board, control, detents, speed: 0});
      this.root.append(element('span', {'class': 'knob'},
        this.#button(control, 'turn', () => turn(-1), (name) => `↺ ${name}`, 'counter-clockwise'),
        this.#button(control, 'turn', () => turn(1), (name) => `${name} ↻`, 'clockwise')));
    }
    this.root.append(otherControl(press));
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

  #button(control, kind, onClick, text, how = '') {
    const button = element('button', {type: 'button', 'class': kind, 'data-control': control, 'data-how': how});
    button.addEventListener('click', onClick);
    this.#labels.set(control, [...this.#labels.get(control) ?? [], {button, text, how}]);
    return button;
  }

  async #press(carryOut, board, control) {
    await carryOut({do: 'press', board, control});
    await carryOut({do: 'release', board, control});
  }
}

function otherControl(press) {
  const input = element('input', {type: 'number', min: '0', max: '65535', required: '', placeholder: 'number', 'aria-label': 'Number of another control'});
  const form = element('form', {'class': 'inline-form'}, input, element('button', {}, 'Press number'));
  form.addEventListener('submit', (event) => {
    event.preventDefault();
    press(Number(input.value));
  });
  return form;
}
