// Undo, and saving after a look at the difference.

import {act} from './api.js';
import {ask} from './ask.js';
import {fetchJson} from './connection.js';
import {differenceOf} from './difference.js';
import {element, setText} from './dom.js';

function byId(id) { return document.getElementById(id); }

export class SaveBar {
  #carryOut;
  #configuration = null;
  #warn = (event) => this.#configuration?.unsaved && event.preventDefault();

  constructor(carryOut) {
    this.#carryOut = carryOut;
    byId('undo').addEventListener('click', () => carryOut({do: 'undo'}));
    byId('review').addEventListener('click', () => this.review());
    byId('save').addEventListener('click', () => this.#save());
    byId('reload').addEventListener('click', () => this.#reload());
    addEventListener('beforeunload', this.#warn);
  }

  // For a page that is about to be loaded again: the program keeps the unsaved changes.
  leaveUnasked() { removeEventListener('beforeunload', this.#warn); }

  show({configuration}) {
    this.#configuration = configuration;
    const {problem, changed, canUndo, changedOnDisk} = configuration;
    setText(byId('save-state'), stateText(configuration));
    byId('save-state').dataset.state = problem || changedOnDisk ? 'bad' : '';
    byId('undo').disabled = !canUndo;
    byId('review').disabled = !changed || problem !== '';
    byId('reload').hidden = problem === '' && changedOnDisk === '';
  }

  async review() {
    const {starts, refusal} = this.#configuration;
    const files = await fetchJson('/api/difference');
    byId('difference').replaceChildren(...(files.length > 0 ? differenceOf(files) : [element('p', {}, 'Nothing has changed.')]));
    byId('despite').hidden = starts;
    byId('despite-errors').checked = false;
    setText(byId('despite-text'), `Save although the bridge would not start: ${refusal}`);
    setText(byId('review-status'), '');
    byId('review-dialog').showModal();
  }

  async #save() {
    const reason = await act({do: 'save', despiteErrors: byId('despite-errors').checked});
    setText(byId('review-status'), reason);
    if (reason === '') {
      byId('review-dialog').close();
    }
  }

  async #reload() {
    if (!this.#configuration.unsaved || await ask('Read the files again?', 'All changes that you haven’t saved are lost.')) {
      this.#carryOut({do: 'reload'});
    }
  }
}

function stateText({problem, changed, changedOnDisk, exists}) {
  if (problem || changedOnDisk) {
    return problem || changedOnDisk;
  }
  if (exists === false) {
    return 'There is no configuration yet. Nothing is written before you save.';
  }
  return changed ? 'There are unsaved changes.' : 'Everything is saved.';
}
