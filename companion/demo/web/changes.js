// What a screen reader is to announce of a new state.

import {lightWords} from './light.js';

// Each subject with its words: while they stay the same, there is nothing to announce.
function subjects({boards, simulator, bridge}) {
  const words = new Map();
  for (const {name, plugged, light} of boards) {
    words.set(`${name} plug`, `${name} ${plugged ? 'plugged in' : 'unplugged'}`);
    if (plugged) {
      words.set(`${name} light`, `${name} light ${lightWords(light)}`);
    }
  }
  words.set('simulator', `Simulator ${simulator.running ? 'running' : 'not running'}`);
  words.set('battery', `Battery ${simulator.settings.battery}`);
  words.set('session', simulator.connected ? 'Session open' : 'No session');
  words.set('bridge', `Bridge ${bridge.running ? 'running' : 'not running'}`);
  return words;
}

// Pairs of a subject and its words; none for the first state.
export function changes(before, now) {
  const old = before === null ? null : subjects(before);
  return old === null ? [] : [...subjects(now)].filter(([subject, words]) => old.get(subject) !== words);
}
