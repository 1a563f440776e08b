import assert from 'node:assert/strict';
import {test} from 'node:test';
import {waitFor} from './support/cockpit.js';
import {withCockpitPage} from './support/cockpit_page.js';

const shared = withCockpitPage();
const plugOf = (name) => shared.view.boards(name).locator('.plug');

test('a pulled plug removes the board, and the log says so', async () => {
  const {view} = shared;
  await plugOf('MFD').click();
  await view.waitForLog(/HID device disconnected: E66138A1B2C3D4F6/);
  await view.effectIs('MFD', 'none');
  assert.equal(await plugOf('MFD').textContent(), 'Plug in');
  assert.equal(await view.lightText('MFD'), 'no power');
  assert.deepEqual([...new Set(await view.glows('MFD', 3))], [0]);
});

test('a board without its plug sends nothing, and the other goes on', async () => {
  const {view} = shared;
  await view.control('MFD', 'AP').click();
  await view.press('PFD', 'AP_FD', '(>K:TOGGLE_FLIGHT_DIRECTOR)');
  assert.equal((await view.commands()).some(({text}) => text === '(>K:AP_MASTER)'), false);
});

test('a press on a board without its plug leaves nothing of an earlier press on the path', async () => {
  const {view} = shared;
  await view.press('PFD', 'AP', '(>K:AP_MASTER)');
  const station = (name) => view.page.locator(`[data-station="${name}"]`);
  await waitFor(async () => await station('simulator').locator('.what').textContent() === '(>K:AP_MASTER)');
  await view.control('MFD', 'FPL').click();
  await waitFor(async () => /FPL pressed/.test(await station('panel').textContent()));
  assert.match(await station('panel').textContent(), /MFD has no power and reports nothing/);
  assert.equal(await station('bridge').locator('.what').textContent(), '–');
  assert.equal(await station('simulator').locator('.what').textContent(), '–');
});

test('a board that is plugged in again works again', async () => {
  const {view} = shared;
  await plugOf('MFD').click();
  await view.waitForLog(/HID device connected: E66138A1B2C3D4F6 index=2/);
  await view.effectIs('MFD', 'steady');
  await view.press('MFD', 'AP_HDG', '(>K:AP_HDG_HOLD)');
});

test('the plug works by the keyboard', async () => {
  const {view} = shared;
  await plugOf('PFD').focus();
  await view.page.keyboard.press('Enter');
  await view.waitForLog(/HID device disconnected: E66138A1B2C3D4E5/);
  await view.page.keyboard.press('Enter');
  await view.effectIs('PFD', 'steady');
  await waitFor(async () => await view.boards('PFD').locator('.lamp').textContent() === 'simulator connected');
});
