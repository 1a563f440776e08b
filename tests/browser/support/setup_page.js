// The setup page as a person sees and uses it, with a folder of its own and a simulator's folder to register in.

import assert from 'node:assert/strict';
import {spawnSync} from 'node:child_process';
import {mkdirSync, mkdtempSync, readFileSync, rmSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';
import {after, before} from 'node:test';
import {Cockpit, launchBrowser, limit, waitFor} from './cockpit.js';
import {seenByProgram} from './program.js';

export class SetupPage {
  errors = [];

  static async open(browser, run, options = {}) {
    const opened = new SetupPage();
    opened.context = await browser.newContext({viewport: {width: 1400, height: 1100}, ...options});
    opened.page = await opened.context.newPage();
    opened.page.setDefaultTimeout(limit);
    opened.page.on('console', (message) => message.type() === 'error' && opened.errors.push(message.text()));
    opened.page.on('pageerror', (error) => opened.errors.push(String(error)));
    await opened.page.goto(run.address);
    await waitFor(async () => await opened.page.locator('#link').textContent() === 'live', 'the link');
    return opened;
  }

  // The browser reports each refused action as an error of its own; tests that expect one clear it.
  async close() {
    await this.context.close();
    assert.deepEqual(this.errors, []);
  }

  row(number) { return this.page.locator(`#controls [data-control="${number}"]`); }
  key(board, number, how = '') {
    return this.page.locator(`[data-board="${board}"] [data-control="${number}"][data-how="${how}"]`);
  }
  button(name) { return this.page.getByRole('button', {name, exact: true}); }
  text(id) { return this.page.locator(`#${id}`).textContent(); }
  waitForText(id, pattern) { return waitFor(async () => pattern.test(await this.text(id)), `${pattern} in ${id}`); }

  async openCheckUp() {
    await this.page.locator('#check-up summary').click();
    await this.page.locator('#check-up-results li').first().waitFor();
  }

  async name(number, name) {
    await this.row(number).locator('input').fill(name);
    await this.row(number).getByRole('button', {name: 'Name it'}).click();
    await this.row(number).getByText(name, {exact: true}).waitFor();
  }

  async assign(name, command) {
    await this.button(`Assign ${name}`).click();
    await this.page.locator('#command').fill(command);
    await this.page.locator('#assign').click();
    await this.waitForText('assign-status', /^Assigned/);
    await this.page.locator('#assign-dialog').getByRole('button', {name: 'Close'}).click();
  }

  async save() {
    await this.page.locator('#review').click();
    await this.page.locator('#save').click();
    await this.waitForText('save-state', /^Everything is saved/);
  }
}

// A folder with a configuration that doesn't exist yet.
export class SetupFolder {
  path = mkdtempSync(join(tmpdir(), 'setup-test-'));
  config = join(this.path, 'config', 'config.json');
  exeXml = join(this.path, 'Microsoft Flight Simulator', 'EXE.xml');

  constructor() { mkdirSync(join(this.path, 'Microsoft Flight Simulator')); }

  read(name) { return readFileSync(join(this.path, 'config', name), 'utf8'); }

  start(...options) {
    const words = ['setup', '--no-browser', '--port', '0', '--config', seenByProgram(this.config), ...options];
    return Cockpit.launch(words, this.#environment);
  }

  // The answers of the command.
  doctor() {
    return JSON.parse(spawnSync(process.env.VANTREL, ['doctor', '--json', '--config', this.config],
      {encoding: 'utf8', env: {...process.env, ...this.#environment}}).stdout);
  }

  get #environment() { return {APPDATA: seenByProgram(this.path), LOCALAPPDATA: ''}; }

  remove() { rmSync(this.path, {recursive: true}); }
}

// A program and a page for the tests of a file, each run checked for a clean end.
export function withSetupPage(...options) {
  const shared = {folder: new SetupFolder()};
  before(async () => {
    shared.run = await shared.folder.start(...options);
    shared.browser = await launchBrowser();
    shared.view = await SetupPage.open(shared.browser, shared.run);
  });
  after(async () => {
    try {
      await shared.view?.close();
    } finally {
      await shared.browser?.close();
      await shared.run?.stop();
      shared.folder.remove();
    }
  });
  return shared;
}
