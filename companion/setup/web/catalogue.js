// The simulator's events with their descriptions, for searching and for naming what a command does.

import {fetchJson} from './connection.js';

const mostResults = 40;
const eventPattern = />\s*([KH]:[^)\s]+)/gi;

export class Catalogue {
  #events = [];
  #byName = new Map();
  /// The sample set's names of controls, by number.
  names = {};

  async load() {
    const {events, names} = await fetchJson('/api/catalogue');
    this.names = names;
    this.#events = events.map((event) => ({
      ...event, title: describe(event), words: `${event.description} ${event.group} ${event.name}`.toLowerCase().replaceAll('_', ' '),
    }));
    this.#byName = new Map(this.#events.map((event) => [event.name.toUpperCase(), event]));
  }

  // Events with all of the words, those whose description begins with them first.
  search(text) {
    const words = text.toLowerCase().replaceAll('_', ' ').split(/\s+/).filter(Boolean);
    if (words.length === 0) {
      return [];
    }
    const found = this.#events.filter((event) => words.every((word) => event.words.includes(word)));
    const rank = (event) => event.words.startsWith(words.join(' ')) ? 0 : 1;
    return found.sort((a, b) => rank(a) - rank(b)).slice(0, mostResults);
  }

  // What a command does, as far as its events are known.
  describe(command) {
    const titles = [...command.matchAll(eventPattern)].map(([, name]) => this.#byName.get(name.toUpperCase())?.title);
    return [...new Set(titles.filter(Boolean))].slice(0, 2).join('; ');
  }
}

function describe({description, name}) {
  return description || name;
}
