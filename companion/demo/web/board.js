// One panel: its controls, its display, its backlight and its plug.

import {makeButton, makeKnob} from './controls.js';
import {element, setText} from './dom.js';
import {arrange} from './layout.js';
import {calmed, effects, lightAt, lightWords} from './light.js';
import {screenArt} from './screens.js';
import {makeOneTabStop} from './tab_stop.js';

const roleWords = {PFD: 'primary flight display', MFD: 'multi-function display'};
const lessMotion = matchMedia('(prefers-reduced-motion: reduce)');
const ringOrder = ['outer', 'inner'];

export class Board {
  #name;
  #send;
  #root;
  #controls = new Map();
  #light = null;
  #lightSince = 0;
  #glow = '';
  #plugged = false;

  constructor({name, controls}, send) {
    this.#name = name;
    this.#send = send;
    this.#root = this.#build(arrange(controls));
    for (const control of controls) {
      this.#controls.set(control.id, control);
    }
  }

  get root() { return this.#root; }
  get name() { return this.#name; }
  get plugged() { return this.#plugged; }

  control(id) { return this.#controls.get(id) ?? {id, name: String(id), commands: {}}; }

  show(state, displayOn) {
    if (state.light?.text !== this.#light?.text) {
      this.#light = state.light;
      this.#lightSince = performance.now();
    }
    this.#plugged = state.plugged;
    this.#root.classList.toggle('unplugged', !state.plugged);
    this.#root.classList.toggle('lit-display', displayOn && state.plugged);
    this.#root.dataset.effect = state.light && state.plugged ? effects[state.light.effect] ?? '' : 'none';
    setText(this.#part('light'), state.plugged ? lightWords(state.light) : 'no power');
    const lamp = this.#part('status');
    lamp.classList.toggle('on', state.plugged && state.simConnected === true);
    setText(lamp, !state.plugged ? 'not plugged in' : state.simConnected === null ? 'no simulator status yet' :
      state.simConnected ? 'simulator connected' : 'simulator not connected');
    const plugText = state.plugged ? 'Unplug' : 'Plug in';
    setText(this.#part('plug'), plugText);
    this.#part('plug').setAttribute('aria-label', `${plugText} the ${this.#name}`);
    for (const key of this.#root.querySelectorAll('.key')) {
      key.classList.toggle('held', state.held.includes(Number(key.dataset.id)));
    }
  }

  // For when the program is gone.
  forgetState() {
    this.#light = null;
    this.#root.classList.remove('lit-display');
    this.#root.dataset.effect = 'none';
    this.#part('status').classList.remove('on');
    setText(this.#part('light'), 'unknown');
    setText(this.#part('status'), 'unknown');
  }

  // Called for each frame that the browser draws.
  glowAt(now) {
    const glow = (this.#plugged && this.#light ? this.#drawnLight(now - this.#lightSince) : 0).toFixed(2);
    if (glow !== this.#glow) {
      this.#glow = glow;
      this.#root.style.setProperty('--glow', glow);
    }
  }

  #drawnLight(elapsedMs) { return lightAt(lessMotion.matches ? calmed(this.#light) : this.#light, elapsedMs); }

  // Marks the last used control.
  mark(id) {
    for (const used of document.querySelectorAll('.used')) {
      used.classList.remove('used');
    }
    this.#root.querySelector(`[data-id="${id}"]`)?.classList.add('used');
  }

  #part(name) { return this.#root.querySelector(`[data-part-of-board="${name}"]`); }

  #build({left, middle, right, softkeys, other}) {
    const plug = element('button', {'type': 'button', 'class': 'plug', 'data-part-of-board': 'plug'});
    plug.addEventListener('click', () => this.#send({do: this.#plugged ? 'unplug' : 'plug', board: this.#name}));
    const display = element('div', {'class': 'display'}, screenArt(this.#name));
    const bezel = element('div', {'class': 'bezel', 'role': 'toolbar', 'aria-label': `${this.#name} controls`},
      this.#column('left', left), this.#column('middle', middle, display), this.#column('right', right));
    if (softkeys.length > 0) {
      bezel.append(element('div', {'class': 'softkeys', 'role': 'group', 'aria-label': 'softkeys'},
        ...softkeys.map((control) => this.#make(control))));
    }
    if (other.length > 0) {
      bezel.append(element('div', {'class': 'others'}, ...other.map((group) => this.#group(group))));
    }
    makeOneTabStop(bezel, [...bezel.querySelectorAll('.key, .knob')]);
    for (const corner of ['a', 'b', 'c', 'd']) {
      bezel.append(element('i', {'class': `screw ${corner}`, 'aria-hidden': 'true'}));
    }
    return element('article', {'class': 'board', 'data-board': this.#name, 'aria-label': `${this.#name} panel`},
      element('header', {}, element('h2', {}, this.#name), element('p', {'class': 'role'}, roleWords[this.#name] ?? ''), plug),
      bezel,
      element('footer', {},
        element('p', {}, element('span', {'class': 'term'}, 'Backlight'), element('span', {'data-part-of-board': 'light'})),
        element('p', {'class': 'lamp', 'data-part-of-board': 'status'})));
  }

  #column(side, groups, ...above) {
    return element('div', {'class': `column ${side}`}, ...above, ...groups.map((group) => this.#group(group)));
  }

  #group({family, title, controls}) {
    const root = element('div', {'class': 'group', 'data-family': family, 'role': 'group', 'aria-label': title || family.toLowerCase()});
    if (title) {
      root.append(element('span', {'class': 'legend title', 'aria-hidden': 'true'}, title));
    }
    const rings = ringOrder.map((part) => controls.find((control) => control.part === part && control.kind === 'knob'));
    const inRings = rings.every(Boolean) ? rings : [];
    if (inRings.length > 0) {
      const [outer, inner] = inRings.map((control) => this.#make(control));
      root.append(element('div', {'class': 'rings'}, outer, inner));
    }
    root.append(...controls.filter((control) => !inRings.includes(control)).map((control) => this.#make(control)));
    return root;
  }

  #make(control) {
    const about = {board: this.#name, control: control.id};
    const made = control.kind === 'knob' ?
      makeKnob(control, (detents, speed) => this.#send({do: 'turn', ...about, detents, speed})) :
      makeButton(control, {
        press: () => this.#send({do: 'press', ...about}),
        release: () => this.#send({do: 'release', ...about}),
      });
    made.dataset.id = control.id;
    return control.kind === 'knob' && control.label ?
      element('div', {'class': 'labelled', 'data-part': control.part}, made, element('span', {'class': 'legend'}, control.label)) : made;
  }
}
