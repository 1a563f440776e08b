// A button that is pressed as long as a pointer or a key holds it down.

/// The shortest press, since no finger is faster: the bridge drops a press that still waits when its release comes.
const tapMs = 100;
/// A finger that stays so long on a key presses it, and no longer means to swipe.
const touchMs = 150;

// Calls press(), then release() as often, also when the pointer or the focus leaves, or the tab is hidden. The button
// has the class "down" in between.
export function makePressable(button, {press, release}) {
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
