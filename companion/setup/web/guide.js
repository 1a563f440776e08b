// The five steps of a first start.

import {setText} from './dom.js';

function byId(id) { return document.getElementById(id); }

export class Guide {
  #isClosed = false;

  constructor({review, register}) {
    byId('guide-close').addEventListener('click', () => {
      this.#isClosed = true;
      byId('guide').hidden = true;
    });
    byId('guide-save').addEventListener('click', review);
    byId('guide-register').addEventListener('click', register);
  }

  show({progress, boards, bridge}) {
    byId('guide').hidden = this.#isClosed || !progress.first;
    const canRegister = bridge.places.length > 0;
    const done = {
      plug: boards.length > 0, press: progress.pressed, assign: progress.assigned, try: progress.tried,
      finish: progress.saved && (progress.registered || !canRegister),
    };
    const current = Object.keys(done).find((step) => !done[step]);
    for (const step of document.querySelectorAll('[data-step]')) {
      const name = step.dataset.step;
      step.dataset.state = done[name] ? 'done' : name === current ? 'current' : 'later';
      step.toggleAttribute('aria-current', name === current);
      if (name === current) {
        step.setAttribute('aria-current', 'step');
      }
    }
    setText(byId('guide-finish'), finishText(progress, canRegister));
    byId('guide-save').disabled = progress.saved;
    byId('guide-register').disabled = !progress.saved || progress.registered || !canRegister;
  }
}

function finishText({saved, registered}, canRegister) {
  if (saved && registered) {
    return 'Done: start the simulator, and your control works.';
  }
  return canRegister ? 'Save, then register the bridge, so that the simulator starts it.'
    : 'Save. No simulator was found on this machine; register the bridge where there is one.';
}
