// A list of events, the latest last. It stays scrolled to the end unless the user scrolls up.

import {clockText, element, setText} from './dom.js';

const mostLines = 400;
/// What is older happened before the page was opened.
const freshMs = 2000;

export class Lines {
  #list;
  #last = null;

  constructor(list) {
    this.#list = list;
  }

  // A line that equals the one before it only raises its count.
  add({at, tag, kind, text}) {
    const key = `${kind} ${tag} ${text}`;
    if (this.#last?.key === key) {
      this.#last.count += 1;
      setText(this.#last.counter, `×${this.#last.count}`);
      this.#last.row.classList.remove('fresh');
      void this.#last.row.offsetWidth;
      this.#last.row.classList.add('fresh');
      return this.#last.count;
    }
    const counter = element('span', {'class': 'count'});
    const row = element('li', {'class': Date.now() - at < freshMs ? 'fresh' : '', 'data-kind': kind},
      element('time', {}, clockText(at)), element('span', {'class': 'tag'}, tag), element('span', {'class': 'text'}, text), counter);
    this.#append(row);
    this.#last = {key, row, counter, count: 1};
    return 1;
  }

  #append(row) {
    const list = this.#list;
    const atEnd = list.scrollHeight - list.scrollTop - list.clientHeight < 40;
    list.append(row);
    while (list.childElementCount > mostLines) {
      list.firstElementChild.remove();
    }
    if (atEnd) {
      list.scrollTop = list.scrollHeight;
    }
  }
}
