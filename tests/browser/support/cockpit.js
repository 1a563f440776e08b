// Starts the program that is tested, and a browser on its page.

import assert from 'node:assert/strict';
import {once} from 'node:events';
import {chromium} from 'playwright-core';
import {startVantrel} from './program.js';

const chromiumPath = process.env.CHROMIUM ?? '/usr/bin/chromium-headless-shell';
const addressPattern = /http:\/\/127\.0\.0\.1:(\d+)\/#([0-9A-F]{32})/;
const sanitizerPattern = /(Address|Thread|Leak|UndefinedBehavior)Sanitizer|runtime error:/;
/// Generous: under a sanitizer on a busy machine.
export const limit = 60000;

// A run of the program. `stop` interrupts it and checks that it ended well.
export class Cockpit {
  static #running = new Set();
  output = '';

  // For those that a failing test has left behind: their pipes would keep the tests waiting for ever.
  static killLeftOvers() { Cockpit.#running.forEach((cockpit) => cockpit.process.kill('SIGKILL')); }

  static start(...options) { return Cockpit.startWith('--no-browser', '--port', '0', ...options); }

  static startWith(...options) { return Cockpit.launch(['demo', ...options]); }

  // Another command that serves a page, with variables of the environment besides this process's.
  static async launch(words, environment = {}) {
    const cockpit = new Cockpit();
    cockpit.process = startVantrel(words, (text) => { cockpit.output += text; }, environment);
    cockpit.ended = once(cockpit.process, 'close');
    Cockpit.#running.add(cockpit);
    cockpit.ended.then(() => Cockpit.#running.delete(cockpit));
    await waitFor(() => addressPattern.test(cockpit.output) || cockpit.process.exitCode !== null);
    assert.match(cockpit.output, addressPattern);
    [cockpit.address, cockpit.port, cockpit.token] = addressPattern.exec(cockpit.output);
    cockpit.origin = `http://127.0.0.1:${cockpit.port}`;
    return cockpit;
  }

  async stop() {
    this.process.kill('SIGINT');
    const patience = setTimeout(() => this.process.kill('SIGKILL'), limit);
    const [code] = await this.ended;
    clearTimeout(patience);
    assert.doesNotMatch(this.output, sanitizerPattern);
    assert.equal(code, 0, this.output);
  }

  // A request as any program of this machine could send it.
  request(path, {token = this.token, ...options} = {}) {
    const headers = {...(token ? {'X-Page-Token': token} : {}), ...options.headers};
    return fetch(this.origin + path, {...options, headers});
  }

  act(action, headers = {}) {
    return this.request('/api/action', {
      method: 'POST', headers: {'Content-Type': 'application/json', ...headers}, body: JSON.stringify(action),
    });
  }
}

// A program that is expected to end by itself.
export async function runProgram(...options) {
  let output = '';
  const child = startVantrel(['demo', ...options], (text) => { output += text; });
  const [code] = await once(child, 'close');
  assert.doesNotMatch(output, sanitizerPattern);
  return {code, output};
}

export function launchBrowser() {
  // A sandbox needs rights that a test machine's root doesn't have.
  return chromium.launch({executablePath: chromiumPath, args: ['--no-sandbox']});
}

export async function waitFor(condition, what = 'the condition') {
  const end = Date.now() + limit;
  while (!await condition()) {
    assert.ok(Date.now() < end, `${what} did not come true`);
    await new Promise((resolve) => setTimeout(resolve, 20));
  }
}
