// Builds the page and passes each event to the parts that show it.

import {Announcer} from './announcer.js';
import {Board} from './board.js';
import {Bridge} from './bridge.js';
import {changes} from './changes.js';
import {Actions, fetchJson, hasToken, listen} from './connection.js';
import {element, setText} from './dom.js';
import {lightWords} from './light.js';
import {PressPath} from './press_path.js';
import {Simulator} from './simulator.js';
import {wireThemes} from './theme.js';
import {joinTurns} from './turns.js';

const troubleMs = 6000;

function byId(id) { return document.getElementById(id); }

class Trouble {
  #timer = null;

  show(text, lasting = false) {
    clearTimeout(this.#timer);
    setText(byId('trouble'), text);
    byId('trouble').hidden = text === '';
    this.#timer = lasting ? null : setTimeout(() => this.show('', true), troubleMs);
  }
}

class Page {
  #boards = new Map();
  #trouble = new Trouble();
  #actions = new Actions((reason) => this.#trouble.show(reason), joinTurns);
  #pressPath = new PressPath(document.querySelector('.press-path'));
  #bridge = new Bridge(byId('bridge'));
  #announcer = new Announcer(byId('announcer'));
  #simulator;
  #state = null;
  #wasLinked = false;

  constructor() {
    wireThemes(byId('themes'));
    this.#simulator = new Simulator(byId('simulator'), (command) => this.#send({do: 'sim', command}), this.#announcer);
    for (const button of document.querySelectorAll('[data-do]')) {
      button.addEventListener('click', () => this.#send({do: button.dataset.do}));
    }
  }

  async open() {
    if (!hasToken) {
      this.#link(false);
      this.#trouble.show('This address is incomplete. Open the whole address that the program printed, up to its last letter.', true);
      return;
    }
    try {
      this.#build(await fetchJson('/api/panel'));
    } catch (failure) {
      this.#link(false);
      this.#trouble.show(`The program refuses this page: ${failure.message.trim()}. Open the address that it printed last.`, true);
      return;
    }
    this.#drawLights();
    listen((kind, data) => this.#take(kind, data), (linked, refusal) => this.#link(linked, refusal));
  }

  #send(action) { this.#actions.send(action); }

  #build({configuration, boards, controls}) {
    this.#simulator.label(controls);
    setText(byId('configuration'), `with ${configuration}`);
    for (const made of boards) {
      const board = new Board(made, (action) => this.#send(action));
      this.#boards.set(made.name, board);
      byId('boards').append(board.root);
    }
    if (boards.length === 0) {
      byId('boards').append(element('p', {'class': 'card'}, 'This machine’s own boards are in use. Press something on them.'));
    }
  }

  // A restarted program has a new token, which this page doesn't know. `refusal` is the program's own reason, if it
  // gives one.
  #link(linked, refusal = '') {
    byId('link').dataset.state = linked ? 'good' : 'bad';
    setText(byId('link'), linked ? 'live' : 'not connected');
    if (linked && this.#wasLinked) {
      location.reload();
    }
    this.#wasLinked ||= linked;
    const ended = 'The program has ended. Start vantrel demo again, and open the address that it prints.';
    this.#trouble.show(linked ? '' : this.#wasLinked ? ended : refusal, true);
    if (!linked) {
      this.#forgetState();
    }
  }

  // Nothing that was last known need be true any more.
  #forgetState() {
    for (const pill of document.querySelectorAll('[data-shows]')) {
      pill.dataset.state = 'off';
      setText(pill, 'unknown');
    }
    for (const board of this.#boards.values()) {
      board.forgetState();
    }
  }

  #take(kind, data) {
    switch (kind) {
      case 'state': this.#show(data); break;
      case 'log': this.#bridge.add(data); this.#pressPath.logged(data); break;
      case 'sim': this.#pressPath.received(this.#simulator.receive(data)); break;
      case 'sent': this.#takeReport(data); break;
      case 'board': this.#takeOutput(data); break;
      default: break;
    }
  }

  #show(state) {
    for (const [subject, text] of changes(this.#state, state)) {
      this.#announcer.say(subject, text);
    }
    const before = this.#state?.simulator.settings;
    const now = state.simulator.settings;
    this.#state = state;
    const displaysOn = state.simulator.real || state.simulator.running && now.battery === 'on';
    for (const board of state.boards) {
      this.#boards.get(board.name)?.show(board, displaysOn);
    }
    this.#simulator.show(state.simulator);
    this.#bridge.show(state.bridge);
    if (before && before.battery !== now.battery) {
      this.#pressPath.aircraftChanged(`battery ${now.battery}`);
    } else if (before && before.light !== now.light) {
      this.#pressPath.aircraftChanged(`cockpit light ${now.light} %`);
    }
  }

  #takeReport(report) {
    const board = this.#boards.get(report.board);
    if (this.#pressPath.sent(report, board.control(report.control), board.plugged)) {
      board.mark(report.control);
    }
  }

  #takeOutput(output) {
    const {board, text} = output;
    const light = this.#state?.boards.find((one) => one.name === board)?.light;
    if (text.startsWith('led ')) {
      this.#pressPath.lit(output, light?.text === text.slice(4) ? lightWords(light) : text.slice(4));
    }
  }

  #drawLights() {
    const draw = (now) => {
      for (const board of this.#boards.values()) {
        board.glowAt(now);
      }
      requestAnimationFrame(draw);
    };
    requestAnimationFrame(draw);
  }
}

new Page().open();
