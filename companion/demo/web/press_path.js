// The path of the latest press: panel, bridge, simulator, and back to the panel's light.

import {setText} from './dom.js';

/// The real path is too fast to see, so its stations light up one after the other.
const stationDelayMs = {panel: 0, bridge: 140, simulator: 280, light: 420};
const commandPrefix = 'MobiFlight command: MF.SimVars.Set.';

/// What is older happened before the page was opened.
const freshMs = 3000;

const reportWords = {press: 'pressed', hold: 'held', release: 'released'};

export class PressPath {
  #stations;
  #held = 0;

  constructor(root) {
    this.#stations = Object.fromEntries([...root.querySelectorAll('.station')].map((station) => [station.dataset.station, station]));
  }

  // Returns whether to follow the report: not for the end of a press, unless it does something.
  sent({at, board, report, detents, speed}, control) {
    if (report === 'release' && !control.commands.RELEASE) {
      return false;
    }
    this.#held = report === 'hold' ? this.#held + 1 : 0;
    const clicks = Math.abs(detents);
    const turned = `turned ${detents > 0 ? 'right' : 'left'}${clicks > 1 ? ` ×${clicks}` : ''}${speed >= 4 ? ', fast' : ''}`;
    const done = report === 'turn' ? turned : reportWords[report] + (this.#held > 1 ? ` ×${this.#held}` : '');
    this.#show('panel', at, `${control.name} ${done}`, `${board} · control ${control.id}`);
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

  #show(name, at, what, more) {
    const station = this.#stations[name];
    setText(station.querySelector('.what'), what);
    setText(station.querySelector('.more'), more);
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
