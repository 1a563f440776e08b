import assert from 'node:assert/strict';
import {test} from 'node:test';
import {waitFor} from './support/cockpit.js';
import {withSetupPage} from './support/setup_page.js';

const shared = withSetupPage('--virtual-boards', '1');

const light = () => shared.view.page.locator('[data-board="virtual-1"] header').textContent();

async function choose(part) {
  await shared.view.page.locator('#light-part').selectOption(part);
}

test('each situation is shown on the boards', async () => {
  const {view} = shared;
  await view.page.locator('[data-board="virtual-1"]').waitFor();
  for (const [part, words] of [['backlight', 'steady at 80 %'], ['simDisconnected', 'flash 4 × 150 ms at 100 %'],
    ['batteryOff', 'breathe 5 × 1000 ms at 50 %']]) {
    await choose(part);
    await view.page.locator('#preview').click();
    await waitFor(async () => (await light()).includes(words), words);
  }
});

test('a changed value is shown at once, and saved without touching the others', async () => {
  const {view, folder} = shared;
  await choose('batteryOff');
  await view.page.locator('#light-values [name="level"]').fill('20');
  await view.page.locator('#light-values [name="count"]').focus();
  await waitFor(async () => (await light()).includes('breathe 5 × 1000 ms at 20 %'));
  await view.page.locator('#light-values [name="effect"]').selectOption('FLASH');
  await waitFor(async () => (await light()).includes('flash 5 × 1000 ms at 20 %'));
  await choose('backlight');
  await view.page.locator('#light-values [name="scale"]').fill('0.55');
  await view.page.locator('#light-values [name="max"]').focus();
  await waitFor(async () => (await light()).includes('steady at 44 %'));
  await view.page.locator('#light-values [name="mode"]').selectOption('FIXED');
  await view.page.locator('#light-values [name="value"]').fill('35');
  await view.page.locator('#light-values [name="mode"]').focus();
  await waitFor(async () => (await light()).includes('steady at 35 %'));
  await view.save();
  assert.deepEqual(JSON.parse(folder.read('config.json')).outputs.profiles.panel, {
    backlight: {mode: 'fixed', min: 0, max: 100, default: 80, scale: 0.55, value: 35},
    simDisconnected: {effect: 'flash', count: 4, periodMs: 150, level: 100},
    batteryOff: {effect: 'flash', count: 5, periodMs: 1000, level: 20},
  });
});
