// The check-up of this PC, as "vantrel doctor" makes it.

import {fetchJson} from './connection.js';
import {element, setText} from './dom.js';

const signs = {good: '✓', warning: '!', fault: '✗'};
/// What registering the bridge repairs.
const unregistered = new Set(['exe-xml-absent', 'not-registered', 'registered-disabled', 'registered-path-missing',
  'registered-config-missing', 'registered-elsewhere']);

function byId(id) { return document.getElementById(id); }

export class CheckUpView {
  #register;
  #canRegister = false;
  #isLooking = false;

  // `register` asks first, and gives whether it was done.
  constructor(register) {
    this.#register = register;
    byId('check-up').addEventListener('toggle', () => byId('check-up').open && this.#look());
    byId('check-up-again').addEventListener('click', () => this.#look());
  }

  show({bridge}) { this.#canRegister = bridge.places.length > 0; }

  async #look() {
    if (this.#isLooking) {
      return;
    }
    this.#isLooking = true;
    this.#say('looking …');
    try {
      this.#showResults(await fetchJson('/api/check-up'));
    } catch {
      this.#say('The program does not answer.', 'bad');
    }
    this.#isLooking = false;
  }

  #say(text, state = '') {
    byId('check-up-state').dataset.state = state;
    setText(byId('check-up-state'), text);
  }

  #showResults(results) {
    byId('check-up-results').replaceChildren(...results.map((result) => this.#rowOf(result)));
    const faults = results.filter(({mark}) => mark === 'fault').length;
    const warnings = results.filter(({mark}) => mark === 'warning').length;
    if (faults + warnings === 0) {
      this.#say('Everything looks good', 'good');
    } else {
      this.#say(`${countText(faults, 'fault')}, ${countText(warnings, 'warning')}`, faults > 0 ? 'bad' : '');
    }
  }

  #rowOf({mark, code, title, found, remedy}) {
    const row = element('li', {'data-mark': mark}, element('span', {'class': 'mark', 'aria-hidden': 'true'}, signs[mark]),
      element('div', {}, element('p', {}, element('span', {'class': 'unseen'}, `${mark}: `), element('strong', {}, title), `: ${found}`),
        element('p', {'class': 'note'}, remedy)));
    if (unregistered.has(code) && this.#canRegister) {
      row.append(this.#registerButton());
    }
    return row;
  }

  #registerButton() {
    const button = element('button', {type: 'button'}, 'Register the bridge');
    button.addEventListener('click', async () => {
      if (await this.#register()) {
        // The button vanishes with its row.
        byId('check-up-again').focus();
        this.#look();
      }
    });
    return button;
  }
}

function countText(count, word) { return `${count} ${word}${count === 1 ? '' : 's'}`; }
