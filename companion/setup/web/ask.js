// Asks before something is done. The text may be lines.

import {element, setText} from './dom.js';

export function ask(title, ...lines) {
  const dialog = document.getElementById('ask-dialog');
  setText(document.getElementById('ask-title'), title);
  document.getElementById('ask-text').replaceChildren(...lines.map((line) => element('p', {}, line)));
  dialog.returnValue = 'no';
  dialog.showModal();
  return new Promise((resolve) => {
    dialog.addEventListener('close', () => resolve(dialog.returnValue === 'yes'), {once: true});
  });
}
