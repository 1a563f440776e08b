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
