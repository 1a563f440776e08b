// The path of the latest press: panel, bridge, simulator, and back to the panel's light.

import {setText} from './dom.js';

/// The real path is too fast to see, so its stations light up one after the other.
const stationDelayMs = {panel: 0, bridge: 140, simulator: 280, light: 420};
const commandPrefix = 'MobiFlight command: MF.SimVars.Set.';

/// What is older happened before the page was opened.
const freshMs = 3000;

const reportWords = {press: 'pressed', hold: 'held', release: 'released'};

// The words of a station in the page as it was loaded.
function firstWords(station) {
  return ['what', 'more'].map((part) => station.querySelector(`.${part}`).textContent);
}

export class PressPath {
  #stations;
  #idle;
  #held = 0;

  constructor(root) {
    const stations = [...root.querySelectorAll('.station')].map((station) => [station.dataset.station, station]);
    this.#stations = Object.fromEntries(stations);
    this.#idle = Object.fromEntries(stations.map(([name, station]) => [name, firstWords(station)]));
  }

  // Returns whether to follow the report: not for the end of a press, unless it does something.
  sent({at, board, report, detents, speed}, control, powered) {
    if (report === 'release' && !control.commands.RELEASE) {
      return false;
    }
    if (report !== 'hold') {
      this.#clear('bridge');
      this.#clear('simulator');
    }
    this.#held = report === 'hold' ? this.#held + 1 : 0;
    const clicks = Math.abs(detents);
    const turned = `turned ${detents > 0 ? 'right' : 'left'}${clicks > 1 ? ` ×${clicks}` : ''}${speed >= 4 ? ', fast' : ''}`;
    const done = report === 'turn' ? turned : reportWords[report] + (this.#held > 1 ? ` ×${this.#held}` : '');
    this.#show('panel', at, `${control.name} ${done}`,
      powered ? `${board} · control ${control.id}` : `${board} has no power and reports nothing`);
    return true;
  }

  // `event` is set when the line reports one, and says what the bridge did with it.
  logged({at, text, event}) {
    if (text.startsWith(commandPrefix)) {
      this.#show('bridge', at, text.slice(commandPrefix.length).replace(/^1 /, ''), 'the command from the configuration');
      return;
    }
    if (!event || event.action === '' || event.action === 'BUTTON_RELEASE') {
      return;
    }
    const name = event.control || 'a control without a name';
    if (event.simEventSent) {
      this.#show('bridge', at, `${name}: the built-in event`, 'not listed in the configuration');
    } else if (!event.rpnQueued && event.action !== 'HOLD' && !name.startsWith('MAP_')) {
      this.#show('bridge', at, `${name}: nothing to send`, 'no command for it, or the module isn’t ready');
    }
  }

  received({at, kind, text, count}) {
    if (kind === 'command' || kind === 'event') {
      this.#show('simulator', at, count > 1 ? `${text} ×${count}` : text, kind === 'event' ? 'received as an event' : 'received and run');
    }
  }

  aircraftChanged(text) {
    const at = Date.now();
    this.#show('simulator', at, text, 'the aircraft’s state');
    this.#show('bridge', at, 'works out the panels’ light', 'from the simulator’s state');
  }

  lit({at, board}, words) { this.#show('light', at, words, `${board} · light report`); }

  // What was shown there came of an earlier press.
  #clear(name) {
    this.#write(name, ...this.#idle[name]);
    this.#stations[name].classList.remove('fresh');
  }

  #write(name, what, more) {
    setText(this.#stations[name].querySelector('.what'), what);
    setText(this.#stations[name].querySelector('.more'), more);
  }

  #show(name, at, what, more) {
    const station = this.#stations[name];
    this.#write(name, what, more);
    if (Date.now() - at > freshMs) {
      return;
    }
    setTimeout(() => {
      station.classList.remove('fresh');
      void station.offsetWidth;
      station.classList.add('fresh');
    }, stationDelayMs[name]);
  }
}
