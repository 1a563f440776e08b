// Makes one tab stop of many controls, as a toolbar is: the arrow keys left and right, Home and End go from one to the
// other, and Tab returns to the last one.

function destination(key, at, count) {
  switch (key) {
    case 'ArrowRight': return (at + 1) % count;
    case 'ArrowLeft': return (at + count - 1) % count;
    case 'Home': return 0;
    case 'End': return count - 1;
    default: return null;
  }
}

export function makeOneTabStop(root, controls) {
  const choose = (chosen) => controls.forEach((control) => { control.tabIndex = control === chosen ? 0 : -1; });
  choose(controls[0]);
  root.addEventListener('focusin', (event) => controls.includes(event.target) && choose(event.target));
  root.addEventListener('keydown', (event) => {
    const at = controls.indexOf(event.target);
    const next = destination(event.key, at, controls.length);
    if (at >= 0 && next !== null && !event.ctrlKey && !event.altKey && !event.metaKey) {
      event.preventDefault();
      controls[next].focus();
    }
  });
}
