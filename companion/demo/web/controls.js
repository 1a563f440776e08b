// Buttons and knobs, operated by pointer, wheel, keyboard or screen reader.

import {element} from './dom.js';
import {makePressable} from './press.js';

const degreesPerDetent = 15;
/// Pixels for one detent on a touchpad, which has no notches.
const wheelPerDetent = 40;
/// This many detents within that time are a fast turn.
const fastCount = 5;
const fastWindowMs = 220;
const slowSpeed = 1;
const fastSpeed = 4;

function tip(control) {
  const commands = Object.entries(control.commands).map(([action, command]) => `${action}: ${command}`);
  return [control.name, ...(commands.length > 0 ? commands : ['no command in the configuration'])].join('\n');
}

// Calls press(), then release() as often.
export function makeButton(control, actions) {
  const button = element('button', {
    'type': 'button', 'class': 'key', 'data-control': control.name, 'data-part': control.part,
    'aria-label': `${control.name} button`, 'title': tip(control),
  }, element('span', {'class': 'legend'}, control.label || control.name));
  button.classList.toggle('bare', Object.keys(control.commands).length === 0);
  makePressable(button, actions);
  return button;
}

// How fast a knob is turned, by the detents of the last moment.
class Pace {
  #times = [];

  speedOf(now) {
    this.#times = [...this.#times.filter((time) => now - time < fastWindowMs), now];
    return this.#times.length >= fastCount ? fastSpeed : slowSpeed;
  }
}

function positionWords(position) {
  const clicks = Math.abs(position);
  return clicks === 0 ? 'where it began' : `${clicks} ${clicks === 1 ? 'click' : 'clicks'} ${position < 0 ? 'left' : 'right'}`;
}

// Calls turn(detents, speed); clockwise is above zero.
export function makeKnob(control, turn) {
  const knob = element('div', {
    'class': 'knob', 'data-control': control.name, 'data-part': control.part, 'role': 'spinbutton', 'tabindex': '0',
    'aria-label': `${control.name} knob`, 'aria-valuenow': '0', 'aria-valuetext': positionWords(0), 'title': tip(control),
  }, element('span', {'class': 'cap', 'aria-hidden': 'true'}));
  const pace = new Pace();
  let position = 0;
  const step = (detents, speed = pace.speedOf(performance.now())) => {
    position += detents;
    knob.style.setProperty('--turn', `${position * degreesPerDetent}deg`);
    knob.setAttribute('aria-valuenow', position);
    knob.setAttribute('aria-valuetext', positionWords(position));
    turn(detents, speed);
  };
  addWheel(knob, step);
  addDrag(knob, step);
  addKeys(knob, step);
  return knob;
}

function addWheel(knob, step) {
  let gathered = 0;
  knob.addEventListener('wheel', (event) => {
    event.preventDefault();
    event.stopPropagation();
    gathered -= event.deltaMode === WheelEvent.DOM_DELTA_PIXEL ? event.deltaY || event.deltaX : event.deltaY * wheelPerDetent;
    while (Math.abs(gathered) >= wheelPerDetent) {
      const detent = Math.sign(gathered);
      gathered -= detent * wheelPerDetent;
      // A notch of an ordinary wheel exceeds the threshold more than once, but is one detent.
      gathered = Math.abs(event.deltaY) > 2 * wheelPerDetent ? 0 : gathered;
      event.shiftKey ? step(detent, fastSpeed) : step(detent);
    }
  }, {passive: false});
}

function addDrag(knob, step) {
  let last = null;
  let gathered = 0;
  const angleOf = (event) => {
    const box = knob.getBoundingClientRect();
    return Math.atan2(event.clientY - (box.top + box.height / 2), event.clientX - (box.left + box.width / 2)) * 180 / Math.PI;
  };
  knob.addEventListener('pointerdown', (event) => {
    if (event.button === 0) {
      event.stopPropagation();
      event.preventDefault();
      knob.focus({preventScroll: true});
      knob.setPointerCapture(event.pointerId);
      last = angleOf(event);
      gathered = 0;
      knob.classList.add('down');
    }
  });
  knob.addEventListener('pointermove', (event) => {
    if (last === null) {
      return;
    }
    const angle = angleOf(event);
    gathered += ((angle - last + 540) % 360) - 180;
    last = angle;
    while (Math.abs(gathered) >= degreesPerDetent) {
      const detent = Math.sign(gathered);
      gathered -= detent * degreesPerDetent;
      event.shiftKey ? step(detent, fastSpeed) : step(detent);
    }
  });
  for (const kind of ['pointerup', 'pointercancel', 'lostpointercapture']) {
    knob.addEventListener(kind, () => {
      last = null;
      knob.classList.remove('down');
    });
  }
}

function addKeys(knob, step) {
  const detents = {ArrowUp: 1, PageUp: 1, ArrowDown: -1, PageDown: -1};
  knob.addEventListener('keydown', (event) => {
    const detent = detents[event.key];
    if (detent && !event.ctrlKey && !event.altKey && !event.metaKey) {
      event.preventDefault();
      event.shiftKey || event.key.startsWith('Page') ? step(detent, fastSpeed) : step(detent);
    }
  });
}
