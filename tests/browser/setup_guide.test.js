// The whole way of a first start: from a box with a panel to a command in the simulator.

import assert from 'node:assert/strict';
import {readFileSync} from 'node:fs';
import {test} from 'node:test';
import {Cockpit, waitFor} from './support/cockpit.js';
import {CockpitPage} from './support/cockpit_page.js';
import {seenByProgram} from './support/program.js';
import {withSetupPage} from './support/setup_page.js';

const shared = withSetupPage();
const headingBug = '(>K:HEADING_BUG_INC)';

function currentStep() { return shared.view.page.locator('[data-step][aria-current]').getAttribute('data-step'); }
function stepIs(step) { return waitFor(async () => await currentStep() === step, `step ${step}`); }

test('a board appears as soon as it is plugged in, and vanishes when it is pulled', async () => {
  const {view} = shared;
  assert.equal(await currentStep(), 'plug');
  await view.page.locator('#guide').getByRole('button', {name: 'Add a virtual board'}).click();
  await view.page.locator('[data-board="virtual-1"]').waitFor();
  await view.page.locator('#boards-card').getByRole('button', {name: 'Add a virtual board'}).click();
  await view.page.locator('[data-board="virtual-2"]').waitFor();
  await view.page.locator('[data-board="virtual-2"]').getByRole('button', {name: 'Unplug'}).click();
  await view.page.locator('[data-board="virtual-2"]').waitFor({state: 'detached'});
  await stepIs('press');
});

test('a turned knob lights up its row, which asks for a name and suggests one', async () => {
  const {view} = shared;
  await view.key('virtual-1', 91, 'clockwise').click();
  await view.page.locator('#controls [data-control="91"].fresh').waitFor();
  assert.equal(await view.row(91).locator('input').inputValue(), 'HDG');
  assert.equal(await view.row(91).getAttribute('data-knob'), 'true');
  await view.page.locator('#events').getByText('sends nothing: the event map has no name for control 91').waitFor();
  await waitFor(async () => /Control 91: .*sends nothing/.test(await view.page.locator('#announcer').textContent()), 'the announcement');
  await view.row(91).getByRole('button', {name: 'Name it'}).click();
  await view.row(91).getByText('HDG', {exact: true}).waitFor();
  await stepIs('assign');
});

test('its command is found by what it does, judged, and tried in the virtual simulator', async () => {
  const {view} = shared;
  await view.button('Assign HDG').click();
  await view.page.locator('#event-search').fill('heading bug');
  await view.page.getByRole('button', {name: /^Heading bug right/}).click();
  assert.equal(await view.page.locator('#command').inputValue(), headingBug);
  await view.page.locator('#command').fill('(>K:HEADING_BUG_INK)');
  await view.page.locator('#remarks').getByText(/HEADING_BUG_INC/).waitFor();
  await view.page.locator('#command').fill(headingBug);
  await view.page.locator('#remarks').getByText('Heading bug right').waitFor();
  await view.waitForText('simulator-state', /is ready/);
  await view.page.locator('#try').click();
  await view.waitForText('assign-status', /^The virtual simulator received .*\(>K:HEADING_BUG_INC\)$/);
  await view.page.locator('#assign').click();
  await view.waitForText('assign-status', /^Assigned/);
  await view.page.locator('#assign-dialog').getByRole('button', {name: 'Close'}).click();
  await view.row(91).getByText('Heading bug right').waitFor();
  await stepIs('finish');
});

test('saving shows what it writes first', async () => {
  const {view, folder} = shared;
  await view.page.locator('#guide-save').click();
  await view.page.locator('#difference [data-kind="added"]').getByText('"HDG": 91').waitFor();
  assert.throws(() => folder.read('config.json'), /ENOENT/);
  await view.page.locator('#save').click();
  await view.waitForText('save-state', /^Everything is saved/);
  assert.match(folder.read('hid_event_map.json'), /"HDG": 91/);
  assert.equal(JSON.parse(folder.read('buttons.json')).knobs[0].commands.CW.DEFAULT, headingBug);
});

test('registering asks, and shows what it has changed', async () => {
  const {view, folder} = shared;
  await view.page.locator('#guide-register').click();
  await view.page.locator('#ask-text').getByText(seenByProgram(folder.exeXml)).waitFor();
  await view.button('No').click();
  assert.throws(() => readFileSync(folder.exeXml), /ENOENT/);
  await view.page.locator('#guide-register').click();
  await view.button('Yes').click();
  await view.page.locator('#registration').getByText('<Name>VantrelBridgeHID</Name>').waitFor();
  assert.ok(readFileSync(folder.exeXml, 'utf8').includes(`--config "${seenByProgram(folder.config)}"`));
  await waitFor(async () => await shared.view.page.locator('[data-step]:not([data-state="done"])').count() === 0);
});

test('the bridge then sends exactly this command', async () => {
  const cockpit = await Cockpit.start('--config', seenByProgram(shared.folder.config));
  try {
    const view = await CockpitPage.open(shared.browser, cockpit);
    await view.sessionReady();
    await cockpit.act({do: 'turn', board: 'PFD', control: 91, detents: 1, speed: 0});
    await view.waitForCommand(headingBug);
    assert.deepEqual(await view.commands(), [{kind: 'command', text: headingBug, count: 1}]);
    await view.close();
  } finally {
    await cockpit.stop();
  }
});

test('the bridge starts from here with its log, and ends', async () => {
  const {view} = shared;
  const start = view.page.locator('#bridge-start');
  const startLines = view.page.locator('#log').getByText('HID manager started');
  // The page also shows the end of this machine's log, in which an earlier bridge may have left its lines.
  const earlierStarts = await startLines.count();
  // Only one bridge runs on a machine, and another run of these tests may have started its own.
  await waitFor(async () => {
    // Does nothing while it is disabled, as it may be at any moment.
    await start.evaluate((button) => button.click());
    return await startLines.count() > earlierStarts;
  }, 'a bridge of our own');
  await view.waitForText('bridge-state', /^running/);
  await view.page.locator('#log-filter').fill('configuration loaded');
  const shown = view.page.locator('#log li:visible');
  await waitFor(async () => {
    const lines = await shown.allTextContents();
    return lines.length > 0 && lines.every((line) => /configuration loaded/i.test(line));
  });
  await view.page.locator('#log-filter').fill('');
  await view.page.locator('#bridge-end').click();
  await view.page.locator('#log').getByText('Stop requested from console').waitFor();
  await view.waitForText('bridge-state', /^not running/);
  // Starts that came after the first one were refused, all of them before the end.
  view.errors.length = 0;
});

test('unregistering removes the entry', async () => {
  const {view, folder} = shared;
  await view.page.locator('#unregister').click();
  await view.button('Yes').click();
  await waitFor(() => !readFileSync(folder.exeXml, 'utf8').includes('VantrelBridgeHID'));
});
