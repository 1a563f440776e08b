// The controls by number: their names, their commands, and which one was used last.

import {clockText, element} from './dom.js';
import {actionText, controlText, roleText} from './words.js';

const mostEvents = 60;
const freshMs = 2500;

function byId(id) { return document.getElementById(id); }

export class ControlsView {
  #catalogue;
  #carryOut;
  #onAssign;
  #rows = new Map();
  #controls = [];

  constructor(catalogue, carryOut, onAssign) {
    this.#catalogue = catalogue;
    this.#carryOut = carryOut;
    this.#onAssign = onAssign;
    byId('control-search').addEventListener('input', () => this.#filter());
    byId('control-filter').addEventListener('input', () => this.#filter());
  }

  show({controls, configuration}) {
    this.#controls = controls;
    byId('no-controls').hidden = controls.length > 0 || configuration.problem !== '';
    for (const [number, row] of this.#rows) {
      if (!controls.some((control) => control.number === number)) {
        row.root.remove();
        this.#rows.delete(number);
      }
    }
    controls.forEach((control, place) => this.#showRow(control, place));
    this.#filter();
  }

  // Something was pressed or turned.
  event(data) {
    this.#list(data);
    const row = this.#rows.get(data.control);
    // A page that is opened late gets the last events, too.
    const isOld = Date.now() - data.at > freshMs;
    if (!row || isOld || data.action === 'HOLD' || document.querySelector('dialog[open]')) {
      return;
    }
    row.root.hidden = false;
    row.light();
  }

  #showRow(control, place) {
    let row = this.#rows.get(control.number);
    if (!row) {
      row = new ControlRow(control, {
        onName: (name) => this.#carryOut({do: 'name', control: control.number, name}),
        onAssign: () => this.#onAssign(this.#controls.find(({number}) => number === control.number)),
        suggestion: this.#freeName(control.number),
      });
      this.#rows.set(control.number, row);
      byId('controls').insertBefore(row.root, byId('controls').children[place] ?? null);
    }
    row.show(control, (command) => this.#catalogue.describe(command));
  }

  #freeName(number) {
    const name = this.#catalogue.names[number] ?? '';
    return this.#controls.some((control) => control.name.toUpperCase() === name) ? '' : name;
  }

  #filter() {
    const text = byId('control-search').value.trim().toLowerCase();
    const kind = byId('control-filter').value;
    for (const control of this.#controls) {
      const fits = kind === 'all' || (kind === 'bare' ? control.commands.length === 0 : control.used);
      const row = this.#rows.get(control.number).root;
      row.hidden = !fits || !row.textContent.toLowerCase().includes(text);
    }
  }

  #list(data) {
    const events = byId('events');
    const key = `${data.board} ${data.control} ${data.text}`;
    // A control that is held down reports it again and again.
    if (data.action === 'HOLD' && events.firstElementChild?.dataset.key === key) {
      events.firstElementChild.remove();
    }
    events.prepend(element('li', {'data-kind': data.sends ? 'sends' : 'silent', 'data-key': key},
      element('time', {}, clockText(data.at)),
      element('span', {'class': 'text'}, `${data.name || data.control}: ${data.text}`),
      element('span', {'class': 'note'}, `${data.board}${data.role ? `, ${data.role}` : ''}: ${data.answer}`)));
    while (events.childElementCount > mostEvents) {
      events.lastElementChild.remove();
    }
  }
}

class ControlRow {
  #number;
  #name = element('div', {'class': 'control-name'});
  #commands = element('ul', {'class': 'commands'});
  #assign = element('button', {type: 'button'}, 'Assign');
  #shown = '';
  #actions;
  #timer = null;

  constructor(control, actions) {
    this.#actions = actions;
    this.#number = element('span', {'class': 'number', title: 'The number that the board sends'}, String(control.number));
    this.#assign.addEventListener('click', actions.onAssign);
    this.root = element('li', {'data-control': control.number}, this.#number, this.#name, this.#commands, this.#assign);
  }

  show(control, describe) {
    const shown = JSON.stringify(control);
    if (shown === this.#shown) {
      return;
    }
    this.#shown = shown;
    const isNamed = control.name !== '';
    this.#assign.hidden = !isNamed;
    this.#assign.setAttribute('aria-label', `Assign ${controlText(control)}`);
    this.root.dataset.knob = control.knob;
    if (isNamed) {
      this.#name.replaceChildren(element('strong', {}, control.name), element('span', {'class': 'note'}, control.knob ? ' knob' : ''));
    } else if (this.#name.querySelector('form') === null) {
      this.#name.replaceChildren(this.#nameForm(control.number));
    }
    this.#commands.replaceChildren(...summaries(control.commands, describe).map(commandItem));
    if (isNamed && control.commands.length === 0) {
      this.#commands.replaceChildren(element('li', {'class': 'note'}, 'no command'));
    }
  }

  // Where the user looks for it.
  light() {
    const still = matchMedia('(prefers-reduced-motion: reduce)').matches;
    this.root.scrollIntoView({block: 'nearest', behavior: still ? 'auto' : 'smooth'});
    this.root.classList.add('fresh');
    clearTimeout(this.#timer);
    this.#timer = setTimeout(() => this.root.classList.remove('fresh'), freshMs);
  }

  #nameForm(number) {
    const input = element('input', {required: '', autocomplete: 'off', placeholder: 'its name', list: 'names',
      'aria-label': `Name of control ${number}`, value: this.#actions.suggestion});
    const form = element('form', {'class': 'inline-form'}, input, element('button', {}, 'Name it'));
    form.addEventListener('submit', async (event) => {
      event.preventDefault();
      if (await this.#actions.onName(input.value.trim())) {
        this.#assign.focus();
      }
    });
    return form;
  }
}

// One entry for the roles in which an action has the same meaning.
function summaries(commands, describe) {
  const found = new Map();
  for (const {action, role, command} of commands) {
    const meaning = command === '' ? 'nothing' : describe(command) || command;
    const key = `${action} ${meaning}`;
    const roles = found.get(key)?.roles ?? [];
    found.set(key, {action, meaning, roles: [...roles, roleText(role)]});
  }
  return [...found.values()];
}

function commandItem({action, meaning, roles}) {
  return element('li', {}, element('span', {'class': 'note'}, `${actionText(action)}, ${roles.join(' and ')}: `), meaning);
}
