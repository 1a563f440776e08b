// Builds the page and passes each event to the parts that show it.

import {act} from './api.js';
import {Announcer} from './announcer.js';
import {AssignDialog} from './assign_dialog.js';
import {ask} from './ask.js';
import {BoardsView} from './boards_view.js';
import {BridgeView} from './bridge_view.js';
import {Catalogue} from './catalogue.js';
import {CheckUpView} from './check_up_view.js';
import {Actions, hasToken, listen} from './connection.js';
import {ControlsView} from './controls_view.js';
import {element, setText} from './dom.js';
import {FindingsView} from './findings_view.js';
import {Guide} from './guide.js';
import {LightsView} from './lights_view.js';
import {SaveBar} from './save_bar.js';
import {wireThemes} from './theme.js';

/// What is older happened before the page was opened.
const recentMs = 2000;

function byId(id) { return document.getElementById(id); }

class SetupPage {
  #catalogue = new Catalogue();
  #announcer = new Announcer(byId('announcer'));
  #assign = new AssignDialog(this.#catalogue);
  #views;
  #controls;
  #saveBar;
  #wasLinked = false;

  constructor() {
    wireThemes(byId('themes'));
    const carryOut = (action) => this.carryOut(action);
    const touches = new Actions((reason) => this.#trouble(reason));
    this.#saveBar = new SaveBar(carryOut);
    const bridge = new BridgeView(carryOut);
    this.#controls = new ControlsView(this.#catalogue, carryOut, (control) => this.#assign.open(control));
    this.#views = [new BoardsView(carryOut, (action) => touches.send(action)), this.#controls, this.#assign, new LightsView(carryOut), new FindingsView(), bridge, this.#saveBar,
      new CheckUpView(carryOut, () => bridge.register()),
      new Guide({review: () => this.#saveBar.review(), register: () => bridge.register()})];
    for (const button of document.querySelectorAll('[data-do]')) {
      button.addEventListener('click', () => carryOut({do: button.dataset.do}));
    }
    byId('take-sample').addEventListener('click', async () => {
      if (await ask('Begin with the sample set?', 'It names some 60 controls of two panels and gives them commands. Undo takes it back.')) {
        carryOut({do: 'sample'});
      }
    });
  }

  async open() {
    if (!hasToken) {
      this.#refuse('This address is incomplete. Open the whole address that the program printed, up to its last letter.');
      return;
    }
    try {
      await this.#catalogue.load();
      byId('names').append(...Object.values(this.#catalogue.names).map((value) => element('option', {value})));
    } catch (failure) {
      this.#refuse(`The program refuses this page: ${failure.message.trim()}. Open the address that it printed last.`);
      return;
    }
    listen((kind, data) => this.#take(kind, data), (linked, refusal) => this.#link(linked, refusal));
  }

  // Shows why an action failed; true if it didn't.
  async carryOut(action) {
    const reason = await act(action);
    this.#trouble(reason);
    return reason === '';
  }

  #refuse(reason) {
    this.#link(false, reason);
  }

  #trouble(text) {
    setText(byId('trouble'), text);
    byId('trouble').hidden = text === '';
  }

  // A restarted program has a new token, which this page doesn't know. `refusal` is the program's own reason, if it
  // gives one.
  #link(linked, refusal = '') {
    byId('link').dataset.state = linked ? 'good' : 'bad';
    setText(byId('link'), linked ? 'live' : 'not connected');
    if (linked && this.#wasLinked) {
      // The program sends everything again, which this page shows already.
      this.#saveBar.leaveUnasked();
      location.reload();
    }
    this.#wasLinked ||= linked;
    const ended = 'The program has ended. Start “vantrel setup” again, and open the address that it prints.';
    this.#trouble(linked ? '' : this.#wasLinked ? ended : refusal);
  }

  #take(kind, data) {
    if (kind === 'state') {
      setText(byId('configuration'), data.configuration.path);
      this.#views.forEach((view) => view.show(data));
      return;
    }
    for (const view of this.#views) {
      view[kind]?.(data);
    }
    if (kind === 'event' && Date.now() - data.at < recentMs) {
      const control = data.name || `Control ${data.control}`;
      this.#announcer.say(`${data.board} ${control}`, `${control}: ${data.text}. ${data.answer}`);
    }
  }
}

new SetupPage().open();
