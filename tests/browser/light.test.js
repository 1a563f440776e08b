import assert from 'node:assert/strict';
import {test} from 'node:test';
import {waitFor} from './support/cockpit.js';
import {withCockpitPage} from './support/cockpit_page.js';

const shared = withCockpitPage();

test('with the battery off both boards breathe, and with it on they are steady again', async () => {
  const {view} = shared;
  await view.effectIs('PFD', 'steady');
  await view.toggle('battery');
  await view.effectIs('PFD', 'breathe');
  await view.effectIs('MFD', 'breathe');
  assert.equal(await view.lightText('PFD'), 'breathe 5 × 1000 ms at 50 %');
  const seen = await view.levelsSeen('MFD', (levels) => levels.length > 8 && Math.max(...levels) > 0.4);
  assert.ok(seen.at(-1) <= 0.5, `brightest: ${seen}`);
  await view.toggle('battery');
  await view.effectIs('PFD', 'steady');
  await view.effectIs('MFD', 'steady');
});

test('the cockpit’s light knob is the boards’ backlight', async () => {
  const {view} = shared;
  await view.page.locator('#cockpit-light').fill('35');
  await waitFor(async () => await view.lightText('PFD') === 'steady at 35 %');
  await waitFor(async () => await view.lightText('MFD') === 'steady at 35 %');
  assert.deepEqual([...new Set(await view.glows('PFD', 3))], [0.35]);
  await view.page.locator('#cockpit-light').fill('0');
  await waitFor(async () => await view.lightText('PFD') === 'steady at 0 %');
  assert.deepEqual([...new Set(await view.glows('PFD', 3))], [0]);
  await view.page.locator('#cockpit-light').fill('80');
  await waitFor(async () => await view.lightText('PFD') === 'steady at 80 %');
});

test('the panel’s light is the last station of the path', async () => {
  const {view} = shared;
  await view.page.locator('#cockpit-light').fill('60');
  await waitFor(async () => /60 %$/.test(await view.page.locator('[data-station="light"] .what').textContent()));
});

test('without a session the boards flash and know of no simulator', async () => {
  const {view} = shared;
  await view.faultSwitch('refuse');
  await view.fault('drop');
  await view.effectIs('PFD', 'flash');
  await view.effectIs('MFD', 'flash');
  assert.equal(await view.lightText('PFD'), 'flash 4 × 150 ms at 100 %');
  assert.equal(await view.boards('PFD').locator('.lamp').textContent(), 'simulator not connected');
  assert.deepEqual(await view.levelsSeen('PFD', (levels) => levels.length > 1), [0, 1]);
  await view.faultSwitch('refuse');
  await view.effectIs('PFD', 'steady');
  assert.equal(await view.boards('PFD').locator('.lamp').textContent(), 'simulator connected');
});

test('a light does just what its report says', async () => {
  const levels = await shared.view.page.evaluate(async () => {
    const {lightAt} = await import('/light.js');
    const at = (light, ...times) => times.map((time) => Number(lightAt(light, time).toFixed(2)));
    return {
      none: at({effect: 0}, 0, 500),
      steady: at({effect: 1, brightness: 80}, 0, 500),
      overFull: at({effect: 1, brightness: 255}, 0),
      breathe: at({effect: 2, count: 2, periodMs: 1000, level: 50}, 0, 250, 500, 1000, 1500, 2100, 2900, 3500),
      flash: at({effect: 3, count: 2, periodMs: 200, level: 100}, 0, 99, 101, 199, 201, 301, 450, 1150, 1201),
      endless: at({effect: 3, count: 0, periodMs: 200, level: 40}, 0, 150, 100000, 100150),
      noPeriod: at({effect: 2, count: 3, periodMs: 0, level: 70}, 0, 1234),
      unknown: at({effect: 9}, 0),
    };
  });
  assert.deepEqual(levels, {
    none: [0, 0], steady: [0.8, 0.8], overFull: [1],
    breathe: [0, 0.25, 0.5, 0, 0.5, 0, 0, 0.5],
    flash: [1, 1, 0, 0, 1, 0, 0, 0, 1],
    endless: [0.4, 0, 0.4, 0], noPeriod: [0.7, 0.7], unknown: [0],
  });
});
