import assert from 'node:assert/strict';
import {mkdtempSync, rmSync, writeFileSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';
import {after, test} from 'node:test';
import {Cockpit, launchBrowser, runProgram, waitFor} from './support/cockpit.js';

after(() => Cockpit.killLeftOvers());

const scenarios = '../../simulation/scenarios/stories';
const failing = '../../tests/scenarios/failing';

async function withBrowserAt(cockpit, use) {
  const browser = await launchBrowser();
  try {
    const page = await browser.newPage();
    await page.goto(cockpit.address);
    await use(page);
  } finally {
    await browser.close();
  }
}

test('an interrupt ends the program, also with a page open and a button down', async () => {
  const cockpit = await Cockpit.start();
  await withBrowserAt(cockpit, async (page) => {
    await page.locator('[data-board="PFD"] [data-control="MAP_LEFT"]').hover();
    await page.mouse.down();
    await waitFor(async () => /JOYSTICK_LEFT/.test(await page.locator('#received').innerText()));
    await cockpit.stop();
    await page.getByText('The program has ended').waitFor();
    assert.equal(await page.locator('#link').textContent(), 'not connected');
    for (const pill of await page.locator('[data-shows]').all()) {
      assert.equal(await pill.textContent(), 'unknown');
      assert.equal(await pill.getAttribute('data-state'), 'off');
    }
    assert.equal(await page.locator('.lamp.on').count(), 0);
  });
});

test('a requested port that is taken is reported', async () => {
  const first = await Cockpit.start();
  const refused = await runProgram('--no-browser', '--port', first.port);
  assert.equal(refused.code, 3);
  assert.match(refused.output, new RegExp(`port ${first.port} isn't available: another program uses it`));
  await first.stop();
});

test('two programs without a port take two of the usual ones', async () => {
  const starts = [0, 1].map(() => Cockpit.startWith('--no-browser'));
  const [first, second] = await Promise.all(starts);
  assert.notEqual(first.port, second.port);
  for (const cockpit of [first, second]) {
    assert.ok(Number(cockpit.port) >= 8080 && Number(cockpit.port) <= 8099, cockpit.port);
    await cockpit.stop();
  }
});

test('with this machine’s boards the page shows none, and waits for them', async () => {
  const cockpit = await Cockpit.start('--real-boards');
  await withBrowserAt(cockpit, async (page) => {
    await page.getByText('This machine’s own boards are in use').waitFor();
    assert.equal(await page.locator('.board').count(), 0);
    await waitFor(async () => /Application run loop started/.test(await page.locator('#log').innerText()));
    assert.equal(await page.locator('[data-shows="running"]').textContent(), 'running');
  });
  await cockpit.stop();
});

test('with this machine’s simulator the page has no switches for it, and takes no such action', async () => {
  const cockpit = await Cockpit.start('--real-simulator');
  assert.equal((await cockpit.act({do: 'sim', command: 'battery off'})).status, 400);
  await withBrowserAt(cockpit, async (page) => {
    await page.getByText('This machine’s own simulator is in use.').waitFor();
    assert.equal(await page.locator('#simulator-controls').isVisible(), false);
    assert.equal(await page.locator('[data-shows="running"]').textContent(), 'this machine’s');
    // Nothing runs there, and the boards show it.
    await waitFor(async () => await page.locator('[data-board="PFD"]').getAttribute('data-effect') === 'flash');
  });
  await cockpit.stop();
});

test('a configuration that cannot be read is reported', async () => {
  const {code, output} = await runProgram('--no-browser', '--config', 'no-such-config.json');
  assert.equal(code, 3);
  assert.match(output, /no-such-config\.json: /);
});

test('contradicting options are reported with a hint at the help', async () => {
  const wrong = await runProgram('--no-such-option');
  assert.equal(wrong.code, 2);
  assert.match(wrong.output, /not expected: --no-such-option\nRun with --help/);
  for (const [reason, ...options] of [
    [/--fast requires --script or --replay/, '--fast'],
    [/--port: Value 65536 not in range 0 to 65535/, '--port', '65536'],
    [/--script excludes --replay|--replay excludes --script/, '--script', 'a', '--replay', 'b'],
    [/--port excludes --script/, '--script', 'a', '--port', '1'],
    [/--config excludes --script/, '--script', 'a', '--config', 'b'],
    [/--real-boards excludes --replay/, '--replay', 'a', '--real-boards'],
    [/--real-boards excludes --real-simulator/, '--real-boards', '--real-simulator'],
  ]) {
    const {code, output} = await runProgram('--no-browser', ...options);
    assert.equal(code, 2, options.join(' '));
    assert.match(output, reason);
  }
  const help = await runProgram('--help');
  assert.equal(help.code, 0);
  for (const option of ['--script', '--replay', '--port', '--config', '--no-browser', '--real-boards', '--real-simulator', '--fast']) {
    assert.ok(help.output.includes(option), option);
  }
});

test('a scenario is played without a browser, and its outcome is the exit code', async () => {
  const passed = await runProgram('--script', `${scenarios}/press-sends-its-command.scenario`, '--fast');
  assert.equal(passed.code, 0, passed.output);
  assert.match(passed.output, /passed, \d+ expectations met/);
  const failed = await runProgram('--script', `${failing}/wrong-command.scenario`, '--fast');
  assert.equal(failed.code, 1);
});

test('a log is replayed, and its bad line is reported', async () => {
  const folder = mkdtempSync(join(tmpdir(), 'cockpit-'));
  try {
    const log = join(folder, 'trace.log');
    const line = `2026-01-31 12:00:00 [DEBUG] HID IN device=E66138A1B2C3D4E5 bytes=32 data=0100010005000100${'0'.repeat(48)}\n`;
    writeFileSync(log, line);
    const whole = await runProgram('--replay', log, '--fast');
    assert.equal(whole.code, 0, whole.output);
    assert.match(whole.output, /press AP .*\n.*sim rpn \(>K:AP_MASTER\)/);
    writeFileSync(log, line + line.slice(0, 60));
    const partly = await runProgram('--replay', log, '--fast');
    assert.equal(partly.code, 1);
    assert.match(partly.output, /trace\.log:2: skipped: the line's end is missing/);
    assert.match(partly.output, /sim rpn \(>K:AP_MASTER\)/);
  } finally {
    rmSync(folder, {recursive: true});
  }
});
