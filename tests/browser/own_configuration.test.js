import assert from 'node:assert/strict';
import {test} from 'node:test';
import {withCockpitPage} from './support/cockpit_page.js';

const shared = withCockpitPage('--config', 'configurations/odd/config.json');

test('a user’s own controls find a place, whatever they are called', async () => {
  const {view} = shared;
  for (const [name, kind] of [['Landing Light', 'key'], ['GEAR_UP', 'key'], ['TRIM', 'knob'], ['AP_UNLISTED', 'key']]) {
    assert.equal(await view.control('MFD', name).isVisible(), true, name);
    assert.ok((await view.control('MFD', name).getAttribute('class')).includes(kind), name);
  }
  assert.match(await view.page.locator('#configuration').textContent(), /odd\/config\.json$/);
});

test('a name is shown as it is, not as markup', async () => {
  const {view} = shared;
  const odd = view.boards('PFD').getByRole('button', {name: '<b>&"odd" button'});
  assert.equal(await odd.textContent(), '<b>&"odd"');
  await odd.focus();
  await view.pressKey('Enter', '(>K:ODD)');
});

test('the boards are those that the configuration asks for', async () => {
  const {view} = shared;
  await view.waitForLog(/HID device connected: 00000000000000AA index=1/);
  await view.press('MFD', 'Landing Light', '(>K:LANDING_LIGHTS_TOGGLE)');
});

test('a release with a command of its own is on the path', async () => {
  const {view} = shared;
  await view.press('PFD', 'GEAR_UP', '(>K:GEAR_UP)');
  await view.waitForCommand('(>K:GEAR_SET)');
  assert.match(await view.page.locator('[data-station="panel"] .what').textContent(), /^GEAR_UP released$/);
});

test('a control that the command file does not list fires its built-in event', async () => {
  const {view} = shared;
  await view.press('PFD', 'AP_UNLISTED', 'AP_MASTER');
  assert.deepEqual((await view.commands()).at(-1), {kind: 'event', text: 'AP_MASTER', count: 1});
});

test('a number beyond the usual ones turns its knob', async () => {
  const {view} = shared;
  await view.control('MFD', 'TRIM').focus();
  await view.page.keyboard.press('ArrowUp');
  await view.waitForCommand('(>K:ELEV_TRIM_UP)');
});

test('a light that the profile puts out is out', async () => {
  const {view} = shared;
  await view.faultSwitch('refuse');
  await view.fault('drop');
  await view.effectIs('PFD', 'off');
  assert.deepEqual([...new Set(await view.glows('PFD', 3))], [0]);
  await view.faultSwitch('refuse');
  await view.effectIs('PFD', 'steady');
});
