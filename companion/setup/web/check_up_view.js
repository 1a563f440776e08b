// The check-up of this PC, as "vantrel doctor" makes it.

import {ask} from './ask.js';
import {fetchJson} from './connection.js';
import {element, setText} from './dom.js';

const signs = {good: '✓', warning: '!', fault: '✗'};

function byId(id) { return document.getElementById(id); }

export class CheckUpView {
  #carryOut;
  #register;
  #canRegister = false;
  #isLooking = false;

  // `register` asks first, and gives whether it was done.
  constructor(carryOut, register) {
    this.#carryOut = carryOut;
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

  #rowOf({mark, code, title, found, remedy, repair}) {
    const row = element('li', {'data-mark': mark}, element('span', {'class': 'mark', 'aria-hidden': 'true'}, signs[mark]),
      element('div', {}, element('p', {}, element('span', {'class': 'unseen'}, `${mark}: `), element('strong', {}, title), `: ${found}`),
        element('p', {'class': 'note'}, remedy)));
    if (repair && (repair.code !== 'register' || this.#canRegister)) {
      row.append(this.#repairButton(repair, {code, title}));
    }
    return row;
  }

  async #repair(repair, answer) {
    return await ask(`${repairName(repair)}?`, ...repairLines(repair)) &&
      this.#carryOut({do: 'repair', ...answer, repair});
  }

  #repairButton(repair, answer) {
    const button = element('button', {type: 'button'}, repairName(repair));
    button.addEventListener('click', async () => {
      if (await (repair.code === 'register' ? this.#register() : this.#repair(repair, answer))) {
        // The button vanishes with its row.
        byId('check-up-again').focus();
        this.#look();
      }
    });
    return button;
  }
}

function repairName({code, path}) {
  const name = path.split(/[\\/]/).at(-1);
  return {register: 'Register the bridge', 'write-file': `Write ${name}`, 'make-folder': `Make the folder ${name}`}[code];
}

// What is done, for the question.
function repairLines({code, path, text}) {
  return code === 'make-folder' ? [path] : [path, 'The text:', ...text.trim().split('\n'),
    'A file that is there is kept beside it, with .bak at the end of its name.'];
}

function countText(count, word) { return `${count} ${word}${count === 1 ? '' : 's'}`; }
