// Chooses what a control does, for an action and a role.

import {act, remarksOn} from './api.js';
import {element, setText} from './dom.js';
import {actionText, buttonActions, controlText, everyRole, knobActions, roleText} from './words.js';

const pauseMs = 150;

function byId(id) { return document.getElementById(id); }

export class AssignDialog {
  #catalogue;
  #dialog = byId('assign-dialog');
  #control = null;
  #roles = [everyRole, 'PFD', 'MFD'];
  #timer = null;
  /// Of the latest trial, until the simulator has received it.
  #tried = null;

  constructor(catalogue) {
    this.#catalogue = catalogue;
    byId('event-search').addEventListener('input', () => this.#search());
    byId('command').addEventListener('input', () => this.#judgeSoon());
    byId('actions').addEventListener('change', () => this.#showCommand());
    byId('role').addEventListener('change', () => this.#showCommand());
    byId('try').addEventListener('click', () => this.#try());
    byId('clear').addEventListener('click', () => this.#clear());
    byId('assign-form').addEventListener('submit', (event) => {
      event.preventDefault();
      this.#assign();
    });
    byId('rename').addEventListener('submit', (event) => {
      event.preventDefault();
      this.#rename();
    });
    for (const radio of document.querySelectorAll('[name="simulator"]')) {
      radio.addEventListener('change', () => this.#report(act({do: 'simulator', virtual: radio.value === 'virtual'}), ''));
    }
  }

  open(control) {
    this.#control = control;
    this.#label();
    byId('rename-name').value = control.name;
    byId('event-search').value = '';
    byId('role').replaceChildren(...this.#roles.map((role) => element('option', {value: role}, roleText(role))));
    const actions = control.knob ? knobActions : buttonActions;
    byId('actions').replaceChildren(byId('actions').querySelector('legend'), ...actions.map(actionChoice));
    const first = control.commands.find(({action}) => actions.includes(action));
    this.#choose(first?.action ?? actions[0], first?.role ?? everyRole);
    this.#search();
    this.#dialog.showModal();
    byId('event-search').focus();
  }

  show({controls, boards, simulator}) {
    const roles = boards.map(({role}) => role).filter(Boolean);
    this.#roles = [...new Set([everyRole, 'PFD', 'MFD', ...roles])];
    document.querySelector(`[name="simulator"][value="${simulator.virtual ? 'virtual' : 'real'}"]`).checked = true;
    setText(byId('simulator-state'), `It ${simulator.state}.`);
    this.#control = controls.find(({number}) => number === this.#control?.number) ?? this.#control;
    if (this.#dialog.open) {
      this.#label();
    }
  }

  // Using the control chooses its action.
  event(data) {
    const choice = this.#dialog.open && data.control === this.#control.number &&
      byId('actions').querySelector(`[value="${data.action}"]`);
    if (choice && data.action !== 'RELEASE' && data.action !== 'HOLD') {
      this.#choose(data.action, byId('role').value);
    }
  }

  // The virtual simulator ran a command.
  received({text}) {
    if (this.#tried !== null && text.endsWith(this.#tried)) {
      this.#tried = null;
      setText(byId('assign-status'), `The virtual simulator received ${text}`);
    }
  }

  #label() {
    setText(byId('assign-title'), `${controlText(this.#control)} (${this.#control.knob ? 'knob' : 'control'} ${this.#control.number})`);
  }

  #choose(action, role) {
    byId('actions').querySelector(`[value="${action}"]`).checked = true;
    byId('role').value = role;
    this.#showCommand();
  }

  #place() {
    const action = byId('actions').querySelector(':checked').value;
    return {control: this.#control.name, knob: this.#control.knob, action, role: byId('role').value};
  }

  #showCommand() {
    const {action, role} = this.#place();
    const found = this.#control.commands.find((command) => command.action === action && command.role === role);
    byId('command').value = found?.command ?? '';
    byId('clear').disabled = found === undefined;
    setText(byId('assign-status'), '');
    this.#judge();
  }

  #search() {
    const found = this.#catalogue.search(byId('event-search').value);
    byId('event-results').replaceChildren(...found.map((event) => this.#result(event)));
    byId('event-results').hidden = found.length === 0;
  }

  #result(event) {
    const values = event.values.length > 0 ? ` Values before it: ${event.values.join('; ')}.` : '';
    const button = element('button', {type: 'button', 'data-event': event.name}, element('strong', {}, event.title),
      element('span', {'class': 'mono'}, event.name), element('span', {'class': 'note'}, `${event.group}.${values}`));
    button.addEventListener('click', () => {
      byId('command').value = `(>${event.name})`;
      this.#judge();
      byId('command').focus();
    });
    return element('li', {}, button);
  }

  #judgeSoon() {
    clearTimeout(this.#timer);
    this.#timer = setTimeout(() => this.#judge(), pauseMs);
  }

  async #judge() {
    const command = byId('command').value;
    const remarks = command === '' ? [] : await remarksOn(command);
    if (command !== byId('command').value) {
      return;
    }
    const meaning = this.#catalogue.describe(command);
    byId('remarks').replaceChildren(
      ...remarks.map(({severity, message, hint}) => element('li', {'data-severity': severity}, `${message}. ${hint}`)),
      ...(remarks.length === 0 && meaning ? [element('li', {'data-severity': 'good'}, meaning)] : []));
  }

  // Shows how an action ended; true if it succeeded.
  async #report(action, success) {
    const reason = await action;
    setText(byId('assign-status'), reason || success);
    return reason === '';
  }

  async #try() {
    const command = byId('command').value.trim();
    this.#tried = command;
    setText(byId('assign-status'), '');
    const reason = await act({do: 'try', command});
    if (reason !== '') {
      this.#tried = null;
      setText(byId('assign-status'), reason);
    } else if (this.#tried !== null) {
      setText(byId('assign-status'), 'Sent to the simulator');
    }
  }

  async #assign() {
    const done = await this.#report(act({do: 'assign', ...this.#place(), command: byId('command').value.trim()}),
      'Assigned. Try it, or close this and save');
    byId('clear').disabled &&= !done;
  }

  async #clear() {
    if (await this.#report(act({do: 'clear', ...this.#place()}), 'Removed')) {
      byId('command').value = '';
      byId('clear').disabled = true;
      this.#judge();
    }
  }

  #rename() {
    this.#report(act({do: 'name', control: this.#control.number, name: byId('rename-name').value.trim()}), 'Renamed');
  }
}

function actionChoice(action) {
  return element('label', {}, element('input', {type: 'radio', name: 'action', value: action}), ` ${actionText(action)}`);
}
