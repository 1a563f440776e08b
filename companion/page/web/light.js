// How a panel's backlight shows the last LED control report. Levels are percentages, and a pulsing light makes its
// pulses in groups of "count" with a dark rest between them; a count of zero pulses without a rest.

const shortestRestMs = 800;
const calmPeriodMs = 400;

export const effects = ['off', 'steady', 'breathe', 'flash'];

// The light's strength, 0 to 1, so many milliseconds after the report.
export function lightAt(light, elapsedMs) {
  switch (light.effect) {
    case 1: return share(light.brightness);
    case 2: return share(light.level) * pulse(light, elapsedMs, (phase) => (1 - Math.cos(2 * Math.PI * phase)) / 2);
    case 3: return share(light.level) * pulse(light, elapsedMs, (phase) => (phase < 0.5 ? 1 : 0));
    default: return 0;
  }
}

function share(percent) {
  return Math.min(percent, 100) / 100;
}

function pulse({count, periodMs}, elapsedMs, shape) {
  if (periodMs === 0) {
    return 1;
  }
  const group = count * periodMs;
  const time = count === 0 ? elapsedMs : elapsedMs % (group + Math.max(periodMs, shortestRestMs));
  return count !== 0 && time >= group ? 0 : shape((time % periodMs) / periodMs);
}

// The same light for those who want less motion: never more than three flashes a second.
export function calmed(light) {
  return light.periodMs === 0 ? light : {...light, periodMs: Math.max(light.periodMs, calmPeriodMs)};
}

// An LED control report in a pilot's words.
export function lightWords(light) {
  if (!light) {
    return 'no light report yet';
  }
  switch (light.effect) {
    case 1: return `steady at ${light.brightness} %`;
    case 2:
    case 3: return `${effects[light.effect]} ${light.count} × ${light.periodMs} ms at ${light.level} %`;
    default: return 'off';
  }
}
