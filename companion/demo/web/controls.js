// Buttons and knobs, operated by pointer, wheel, keyboard or screen reader.

import {element} from './dom.js';

const degreesPerDetent = 15;
/// Pixels for one detent on a touchpad, which has no notches.
const wheelPerDetent = 40;
/// This many detents within that time are a fast turn.
const fastCount = 5;
const fastWindowMs = 220;
const slowSpeed = 1;
const fastSpeed = 4;
/// The shortest press, since no finger is faster: the bridge drops a press that still waits when its release comes.
const tapMs = 100;
/// A finger that stays so long on a key presses it, and no longer means to swipe.
const touchMs = 150;

function tip(control) {
  const commands = Object.entries(control.commands).map(([action, command]) => `${action}: ${command}`);
  return [control.name, ...(commands.length > 0 ? commands : ['no command in the configuration'])].join('\n');
}

// Calls press(), then release() as often.
export function makeButton(control, {press, release}) {
  const button = element('button', {
    'type': 'button', 'class': 'key', 'data-control': control.name, 'data-part': control.part,
    'aria-label': `${control.name} button`, 'title': tip(control),
  }, element('span', {'class': 'legend'}, control.label || control.name));
  button.classList.toggle('bare', Object.keys(control.commands).length === 0);
  let down = false;
  let downSince = 0;
  let ending = null;
  const finish = () => {
    clearTimeout(ending);
    ending = null;
    if (down) {
      down = false;
      button.classList.remove('down');
      release();
    }
  };
  const begin = () => {
    if (ending !== null) {
      finish();
    }
    if (!down) {
      down = true;
      downSince = performance.now();
      button.classList.add('down');
      press();
    }
  };
  const end = () => {
    if (down) {
      ending ??= setTimeout(finish, Math.max(0, tapMs - (performance.now() - downSince)));
    }
  };
  addPointer(button, begin, end);
  button.addEventListener('blur', end);
  const isPressKey = (event) => event.key === ' ' || event.key === 'Enter';
  button.addEventListener('keydown', (event) => {
    if (isPressKey(event)) {
      event.preventDefault();
      if (!event.repeat) {
        begin();
      }
    }
  });
  button.addEventListener('keyup', (event) => {
    if (isPressKey(event)) {
      event.preventDefault();
      end();
    }
  });
  // A screen reader clicks with neither pointer nor key.
  button.addEventListener('click', (event) => {
    if (event.detail === 0 && !down) {
      begin();
      end();
    }
  });
  button.addEventListener('contextmenu', (event) => event.preventDefault());
  window.addEventListener('pagehide', finish);
  document.addEventListener('visibilitychange', () => document.hidden && finish());
  return button;
}

// A finger may begin a swipe on a key, which the browser reports as cancelled: so its press waits a moment.
function addPointer(button, begin, end) {
  let waiting = null;
  const press = (pointerId) => {
    waiting = null;
    button.setPointerCapture(pointerId);
    begin();
  };
  const forget = () => {
    clearTimeout(waiting);
    waiting = null;
  };
  button.addEventListener('pointerdown', ({button: which, pointerId, pointerType}) => {
    if (which !== 0) {
      return;
    }
    if (pointerType === 'touch') {
      waiting = setTimeout(() => press(pointerId), touchMs);
    } else {
      press(pointerId);
    }
  });
  button.addEventListener('pointerup', () => {
    if (waiting !== null) {
      forget();
      begin();
    }
    end();
  });
  for (const kind of ['pointercancel', 'lostpointercapture']) {
    button.addEventListener(kind, () => {
      forget();
      end();
    });
  }
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
