// A control's place on a panel, derived from its name. Unknown names get a place too.

const keyNames = new Set(['DIRECT_TO', 'DIRECTTO', 'MENU', 'FPL', 'PROC', 'CLR', 'ENT', 'ENTER', 'CLEAR', 'HOME', 'BACK']);
const parts = {
  OUTER: 'outer', LARGE: 'outer', COARSE: 'outer',
  INNER: 'inner', SMALL: 'inner', FINE: 'inner',
  VOL: 'volume', VOLUME: 'volume', PUSH: 'push', SWAP: 'swap', SWITCH: 'swap',
  UP: 'up', DOWN: 'down', LEFT: 'left', RIGHT: 'right',
};
const sides = {
  left: ['NAV', 'HDG', 'ALT', 'CRS', 'BARO'],
  middle: ['AP'],
  right: ['COM', 'MAP', 'KEYS', 'FMS'],
};
const titles = {AP: 'AUTOPILOT', MAP: 'RANGE · PAN', KEYS: ''};
const signs = {
  DIRECT_TO: 'D→', swap: '⇄', up: '▲', down: '▼', left: '◀', right: '▶', push: 'push',
};

function normal(name) {
  return name.toUpperCase().replace(/[^A-Z0-9]+/g, '_');
}

function softkeyNumber(name) {
  const found = /^(?:SOFTKEY|SOFT_KEY|SK)_?(\d+)$/.exec(normal(name));
  return found ? Number(found[1]) : null;
}

// {family, part}: HDG_PUSH is the "push" of HDG, AP_FLC is "FLC" of AP.
function place(name) {
  const upper = normal(name);
  if (keyNames.has(upper)) {
    return {family: 'KEYS', part: upper};
  }
  if (upper === 'RANGE' || upper === 'RANGE_PUSH') {
    return {family: 'MAP', part: upper === 'RANGE' ? 'main' : 'push'};
  }
  const [family, ...rest] = upper.split('_');
  const last = rest.at(-1);
  return {family, part: rest.length === 1 && parts[last] ? parts[last] : rest.join('_') || 'main'};
}

function label(control, {family, part}) {
  if (signs[part]) {
    return signs[part];
  }
  if (part === 'volume') {
    return 'VOL';
  }
  if (part === 'main' || part === 'outer' || part === 'inner') {
    return control.kind === 'knob' ? '' : family;
  }
  return part.replace('NOSE_', 'NOSE ').replaceAll('_', ' ');
}

// {left, middle, right, softkeys, other}: all but the softkeys are groups {family, title, controls}, each control with
// its part and label.
export function arrange(controls) {
  const groups = new Map();
  const softkeys = [];
  for (const control of controls) {
    const number = softkeyNumber(control.name);
    if (number !== null && control.kind === 'button') {
      softkeys.push({...control, part: 'softkey', label: String(number), number});
      continue;
    }
    const where = place(control.name);
    if (!groups.has(where.family)) {
      groups.set(where.family, {family: where.family, title: titles[where.family] ?? where.family, controls: []});
    }
    groups.get(where.family).controls.push({...control, part: where.part, label: label(control, where)});
  }
  const take = (family) => {
    const group = groups.get(family);
    groups.delete(family);
    return group ? [group] : [];
  };
  return {
    left: sides.left.flatMap(take),
    middle: sides.middle.flatMap(take),
    right: sides.right.flatMap(take),
    softkeys: softkeys.sort((a, b) => a.number - b.number),
    other: mergeSingles([...groups.values()]),
  };
}

// A family needs two members.
function mergeSingles(groups) {
  const single = groups.filter((group) => group.controls.length === 1);
  const others = groups.filter((group) => group.controls.length > 1);
  if (single.length > 0) {
    const controls = single.flatMap((group) => group.controls)
      .map((control) => ({...control, part: 'main', label: control.name}));
    others.push({family: 'OTHER', title: '', controls});
  }
  return others;
}
