// The page as a person sees and uses it.

import assert from 'node:assert/strict';
import {after, before} from 'node:test';
import {Cockpit, launchBrowser, limit, waitFor} from './cockpit.js';

export class CockpitPage {
  errors = [];

  static async open(browser, cockpit, options = {}) {
    const opened = new CockpitPage();
    opened.context = await browser.newContext({viewport: {width: 1400, height: 1000}, ...options});
    opened.page = await opened.context.newPage();
    opened.page.setDefaultTimeout(limit);
    opened.page.on('console', (message) => message.type() === 'error' && opened.errors.push(message.text()));
    opened.page.on('pageerror', (error) => opened.errors.push(String(error)));
    try {
      await opened.page.goto(cockpit.address);
      await opened.boards('PFD').waitFor();
      await opened.sessionIs('session open');
    } catch (failure) {
      throw new Error(`the page did not open: ${opened.errors.join('; ') || 'it reports no error'}`, {cause: failure});
    }
    return opened;
  }

  async close() {
    await this.context.close();
    assert.deepEqual(this.errors, []);
  }

  boards(name) { return this.page.locator(`[data-board="${name}"]`); }
  control(board, name) { return this.boards(board).locator(`[data-control="${name}"]`); }
  shows(name) { return this.page.locator(`[data-shows="${name}"]`); }

  // What the simulator received: kind, text, count.
  received() {
    return this.page.locator('#received li').evaluateAll((rows) => rows.map((row) => ({
      kind: row.dataset.kind, text: row.querySelector('.text').textContent,
      count: Number(row.querySelector('.count').textContent.slice(1) || 1),
    })));
  }

  async commands() {
    return (await this.received()).filter(({kind}) => kind === 'command' || kind === 'event');
  }

  async waitForCommand(text, least = 1) {
    await waitFor(async () => (await this.commands()).some((line) => line.text === text && line.count >= least),
      `the command ${text}, ${least} times,`);
  }

  // As long as it takes: the bridge drops a press that still waits when its release comes, as on a busy machine.
  async press(board, name, command) {
    await this.control(board, name).hover();
    await this.page.mouse.down();
    await this.waitForCommand(command);
    await this.page.mouse.up();
  }

  async pressKey(key, command) {
    await this.page.keyboard.down(key);
    await this.waitForCommand(command);
    await this.page.keyboard.up(key);
  }

  async waitForLog(pattern) {
    await waitFor(async () => pattern.test(await this.page.locator('#log').innerText()), `a log line ${pattern}`);
  }

  sessionIs(text) { return waitFor(async () => await this.shows('session').textContent() === text, text); }

  // The latest session has come to the end of its handshake.
  sessionReady() {
    return waitFor(async () => {
      const lines = await this.received();
      const last = (start) => lines.findLastIndex(({text}) => text.startsWith(start));
      return last('MF.SimVars.Add.') > Math.max(last('opened '), last('closed'));
    }, 'a session');
  }

  bridgeIs(text) { return waitFor(async () => await this.shows('bridge').textContent() === text, `bridge ${text}`); }
  effectIs(board, effect) {
    return waitFor(async () => await this.boards(board).getAttribute('data-effect') === effect, `${board} ${effect}`);
  }

  lightText(board) { return this.boards(board).locator('[data-part-of-board="light"]').textContent(); }

  // The light that is drawn, 0 to 1, at some moments.
  glows(board, moments) {
    return this.boards(board).evaluate(async (root, count) => {
      const seen = [];
      // A busy machine may not have drawn the latest light yet.
      await new Promise(requestAnimationFrame);
      for (let i = 0; i < count; ++i) {
        await new Promise((resolve) => setTimeout(resolve, 30));
        seen.push(Number(root.style.getPropertyValue('--glow')));
      }
      return seen;
    }, moments);
  }

  // All levels that are drawn until there are enough of them: a busy machine draws few in a second.
  async levelsSeen(board, enough) {
    const seen = new Set();
    await waitFor(async () => {
      (await this.glows(board, 20)).forEach((level) => seen.add(level));
      return enough([...seen]);
    }, `the light of ${board}`);
    return [...seen].sort((a, b) => a - b);
  }

  toggle(name) { return this.page.locator(`[data-sim="${name}"]`).click(); }
  async fault(name) {
    await this.openFaults();
    await this.page.locator(`[data-sim="${name}"]`).click();
  }
  async faultSwitch(name) {
    await this.openFaults();
    await this.toggle(name);
  }
  openFaults() { return this.page.locator('.faults').evaluate((details) => { details.open = true; }); }
}

// A program and a page for the tests of a file, each run checked for a clean end.
export function withCockpitPage(...options) {
  const shared = {};
  before(async () => {
    shared.cockpit = await Cockpit.start(...options);
    shared.browser = await launchBrowser();
    shared.view = await CockpitPage.open(shared.browser, shared.cockpit);
    await shared.view.sessionReady();
  });
  after(async () => {
    try {
      await shared.view?.close();
    } finally {
      await shared.browser?.close();
      await shared.cockpit?.stop();
    }
  });
  return shared;
}
