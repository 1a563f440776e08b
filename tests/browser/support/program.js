// The program that is tested, run as its system runs it: the Windows build under Wine.

import {spawn, spawnSync} from 'node:child_process';

const program = process.env.VANTREL;
const isWindows = program.endsWith('.exe');
// Not the script in front of it, so that a signal reaches the program itself.
const loader = '/usr/lib/wine/wine64';

function commandOf(words) { return isWindows ? [loader, [program, ...words]] : [program, words]; }

// Wine takes the variables of the user's profile from its registry only, which forgets these values when Wine ends.
function setInProfile(variables) {
  for (const [name, value] of Object.entries(variables)) {
    spawnSync(loader, ['reg', 'add', 'HKCU\\Volatile Environment', '/v', name, '/d', value, '/f']);
  }
}

// Starts it with variables besides this process's environment. All output goes to `onText`.
export function startVantrel(words, onText, variables = {}) {
  if (isWindows) {
    setInProfile(variables);
  }
  const child = spawn(...commandOf(words), {env: {...process.env, ...variables}});
  for (const stream of [child.stdout, child.stderr]) {
    stream.setEncoding('utf8').on('data', (text) => onText(text.replaceAll('\r', '')));
  }
  return child;
}

// A path of this machine as the program sees it.
export function seenByProgram(path) { return isWindows ? 'Z:' + path.replaceAll('/', '\\') : path; }
