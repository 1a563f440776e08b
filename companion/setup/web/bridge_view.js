// The bridge itself: whether it runs, who starts it, and its log.

import {ask} from './ask.js';
import {differenceOf} from './difference.js';
import {clockText, element, setText} from './dom.js';

const mostLines = 500;

function byId(id) { return document.getElementById(id); }

export class BridgeView {
  #carryOut;
  #bridge = null;
  #placesShown = '';
  /// It is to be started again as soon as it has ended.
  #restarts = false;

  constructor(carryOut) {
    this.#carryOut = carryOut;
    byId('bridge-restart').addEventListener('click', () => this.#restart());
    byId('bridge-start').addEventListener('click', () => carryOut({do: 'startBridge'}));
    byId('bridge-end').addEventListener('click', () => carryOut({do: 'endBridge'}));
    byId('register').addEventListener('click', () => this.register());
    byId('unregister').addEventListener('click', () => this.#unregister());
    byId('log-filter').addEventListener('input', () => this.#filter());
  }

  show({bridge, configuration}) {
    this.#bridge = bridge;
    byId('bridge-state').dataset.state = bridge.running ? 'good' : '';
    setText(byId('bridge-state'), bridge.running ? 'running' : 'not running');
    setText(byId('bridge-note'), noteOf(bridge));
    byId('bridge-start').disabled = bridge.running || !bridge.exists;
    byId('bridge-end').disabled = !bridge.ours;
    // Without saved files, the bridge that is ended couldn't be replaced.
    byId('bridge-restart').disabled = !bridge.running || !bridge.exists || configuration.exists === false;
    if (this.#restarts && !bridge.running) {
      this.#restarts = false;
      this.#carryOut({do: 'startBridge'});
    }
    const isRegistered = bridge.places.some(({registered}) => registered);
    byId('register').disabled = bridge.places.length === 0;
    byId('unregister').disabled = !isRegistered;
    this.#showPlaces(bridge.places);
  }

  log(line) {
    const {at, level, text} = lineOf(line);
    const row = element('li', {'data-kind': level.toLowerCase()}, element('time', {}, clockText(at)),
      element('span', {'class': 'text'}, level ? `${level} ${text}` : text));
    const list = byId('log');
    const atEnd = list.scrollHeight - list.scrollTop - list.clientHeight < 40;
    row.hidden = !this.#fits(row);
    list.append(row);
    while (list.childElementCount > mostLines) {
      list.firstElementChild.remove();
    }
    if (atEnd) {
      list.scrollTop = list.scrollHeight;
    }
  }

  // What registering has changed.
  registration(files) {
    byId('registration').replaceChildren(element('p', {}, files.length > 0 ? 'Changed:' : 'Nothing had to be changed.'),
      ...differenceOf(files));
  }

  // True once it is done.
  async register() {
    const places = this.#bridge.places.map(({path}) => path);
    return await ask('Register the bridge?', 'The simulator then starts it. This adds an entry to:', ...places) && this.#carryOut({do: 'register'});
  }

  // One that was started elsewhere is ended after a question only. In its place comes one that was started here.
  async #restart() {
    const {ours, process, ending} = this.#bridge;
    if (ours || await ask('Restart the bridge?', `It was ${starterOf(this.#bridge)}. ${ending}`,
      'Then it is started here, with the saved configuration, and ends with this program.')) {
      // Before the action, since the end may be noticed before its answer comes.
      this.#restarts = true;
      if (!await this.#carryOut({do: 'endBridge', process})) {
        this.#restarts = false;
      }
    }
  }

  async #unregister() {
    const listed = this.#bridge.places.filter(({registered}) => registered);
    if (await ask('Unregister the bridge?', 'This removes its entry from:', ...listed.map(({path}) => path))) {
      this.#carryOut({do: 'unregister'});
    }
  }

  #showPlaces(places) {
    const shown = JSON.stringify(places);
    if (shown === this.#placesShown) {
      return;
    }
    this.#placesShown = shown;
    const rows = places.map(({path, registered}) => element('li', {}, element('span', {'class': 'pill', 'data-state': registered ? 'good' : ''},
      registered ? 'registered' : 'not registered'), element('span', {'class': 'mono'}, path)));
    byId('places').replaceChildren(...(rows.length > 0 ? rows : [element('li', {'class': 'note'},
      'No simulator was found on this machine.')]));
  }

  #fits(row) { return row.textContent.toLowerCase().includes(byId('log-filter').value.trim().toLowerCase()); }

  #filter() {
    for (const row of byId('log').children) {
      row.hidden = !this.#fits(row);
    }
  }
}

// A bridge that was started here prints its lines with time and level.
function lineOf(line) {
  const [, level, text] = /^\S+ \S+ \[(\w+)\] (.*)$/.exec(line.text) ?? [];
  return level ? {at: line.at, level, text} : line;
}

function starterOf({ofSimulator}) { return ofSimulator ? 'started by the simulator' : 'started by another program'; }

function noteOf({exists, program, running, ours, ...bridge}) {
  if (ours) {
    return 'It was started here, and ends with this program. Restart it after a save.';
  }
  if (running) {
    return `It was ${starterOf(bridge)}. It reads the files when it starts: restart it after a save.`;
  }
  return exists ? program : `There is no bridge at ${program}. Put this program beside it.`;
}
