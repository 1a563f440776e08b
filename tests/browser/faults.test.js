import assert from 'node:assert/strict';
import {test} from 'node:test';
import {waitFor} from './support/cockpit.js';
import {withCockpitPage} from './support/cockpit_page.js';

const shared = withCockpitPage();

async function sessionCount() {
  return (await shared.view.received()).filter(({text}) => text.startsWith('opened ')).length;
}

test('a dropped session is followed by another one', async () => {
  const {view} = shared;
  const before = await sessionCount();
  await view.fault('drop');
  await waitFor(async () => await sessionCount() > before);
  await view.waitForLog(/SimConnect disconnected/);
  await view.sessionReady();
  await view.effectIs('PFD', 'steady');
  await view.press('MFD', 'AP_BC', '(>K:AP_BC_HOLD)');
});

test('a silent module makes presses go nowhere, as the log says', async () => {
  const {view} = shared;
  await view.faultSwitch('silent');
  const before = await sessionCount();
  await view.fault('drop');
  await waitFor(async () => await sessionCount() > before);
  await view.sessionIs('session open');
  await view.control('PFD', 'AP_ALT').click();
  await view.waitForLog(/MobiFlight not ready; using SimConnect fallback for AP_ALT/);
  assert.equal((await view.commands()).some(({text}) => text === '(>K:AP_ALT_HOLD)'), false);
  await view.faultSwitch('silent');
});

test('a module that answers with an error is warned of', async () => {
  const {view} = shared;
  await view.faultSwitch('error');
  await view.fault('drop');
  await view.waitForLog(/WARN\s+MobiFlight registration error: /);
  const warning = view.page.locator('#log [data-kind="warn"]').first();
  assert.notEqual(await warning.locator('.text').evaluate((text) => getComputedStyle(text).color),
    await view.page.locator('#log [data-kind="info"] .text').first().evaluate((text) => getComputedStyle(text).color));
  await view.faultSwitch('error');
  await view.fault('drop');
});

test('a simulator that quits ends the bridge, and one that starts brings it back', async () => {
  const {view} = shared;
  await view.page.locator('[data-sim="quit"]').click();
  await view.bridgeIs('ended with 0');
  assert.equal(await view.shows('running').textContent(), 'not running');
  assert.equal(await view.page.locator('[data-sim="quit"]').isDisabled(), true);
  await view.page.locator('[data-sim="start"]').click();
  await view.bridgeIs('running');
  await view.sessionReady();
  await view.press('MFD', 'AP_NAV', '(>K:AP_NAV1_HOLD)');
});

test('a simulator that crashes and starts at once finds a bridge', async () => {
  const {view} = shared;
  const sessions = async () => (await view.received()).filter(({text}) => text.startsWith('opened ')).length;
  const before = await sessions();
  await view.fault('die');
  await waitFor(() => view.page.locator('[data-sim="start"]').isEnabled());
  await view.page.locator('[data-sim="start"]').click();
  await waitFor(async () => await sessions() > before, 'another session');
  await view.sessionIs('session open');
  await view.bridgeIs('running');
});

test('the bridge is stopped and started by itself', async () => {
  const {view} = shared;
  await view.page.locator('[data-do="stop-bridge"]').click();
  await view.bridgeIs('ended with 0');
  await view.sessionIs('no session');
  await view.page.locator('[data-do="start-bridge"]').click();
  await view.bridgeIs('running');
  await view.sessionReady();
  await view.press('PFD', 'AP_VS', '(>K:AP_VS_HOLD)');
});
