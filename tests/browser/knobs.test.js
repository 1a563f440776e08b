import assert from 'node:assert/strict';
import {test} from 'node:test';
import {withCockpitPage} from './support/cockpit_page.js';

const shared = withCockpitPage();

async function lastLog(pattern) {
  await shared.view.waitForLog(pattern);
}

test('an arrow key turns a knob by one detent', async () => {
  const {view} = shared;
  await view.control('PFD', 'HDG').focus();
  await view.page.keyboard.press('ArrowUp');
  await view.waitForCommand('(>K:HEADING_BUG_INC)');
  await view.page.keyboard.press('ArrowDown');
  await view.waitForCommand('(>K:HEADING_BUG_DEC)');
  assert.deepEqual(await view.commands(), [
    {kind: 'command', text: '(>K:HEADING_BUG_INC)', count: 1},
    {kind: 'command', text: '(>K:HEADING_BUG_DEC)', count: 1},
  ]);
  assert.equal(await view.control('PFD', 'HDG').getAttribute('aria-valuenow'), '0');
});

test('an arrow key with shift is a fast turn, and takes the fast command', async () => {
  const {view} = shared;
  await view.control('PFD', 'HDG').focus();
  await view.page.keyboard.press('Shift+ArrowUp');
  await view.waitForCommand('(A:AUTOPILOT HEADING LOCK DIR, degrees) 10 + dnor near (>K:HEADING_BUG_SET)');
  await lastLog(/controlId=91\(HDG\) value=1 speed=4 mode=0 mfAmount=1 fast=1 rpn=queued/);
  await view.page.keyboard.press('PageDown');
  await view.waitForCommand('(A:AUTOPILOT HEADING LOCK DIR, degrees) 10 - dnor near (>K:HEADING_BUG_SET)');
});

test('a fast turn of a knob without a fast command repeats its command', async () => {
  const {view} = shared;
  await view.control('MFD', 'RANGE').focus();
  await view.page.keyboard.press('Shift+ArrowUp');
  await view.waitForCommand('(>H:AS1000_MFD_RANGE_INC)', 4);
});

test('a notch of the wheel is one detent, away from the hand clockwise', async () => {
  const {view} = shared;
  await view.control('PFD', 'BARO').hover();
  await view.page.mouse.wheel(0, -120);
  await view.waitForCommand('(>H:AS1000_PFD_BARO_INC)');
  await view.page.mouse.wheel(0, 120);
  await view.waitForCommand('(>H:AS1000_PFD_BARO_DEC)');
  const baro = (await view.commands()).filter(({text}) => text.includes('BARO'));
  assert.deepEqual(baro.map(({count}) => count), [1, 1]);
});

test('a wheel that is spun turns fast', async () => {
  const {view} = shared;
  await view.control('MFD', 'HDG').evaluate((knob) => {
    for (let i = 0; i < 8; ++i) {
      knob.dispatchEvent(new WheelEvent('wheel', {deltaY: -120, bubbles: true, cancelable: true}));
    }
  });
  await lastLog(/role=MFD\(ENCODER\) controlId=91\(HDG\) value=\d+ speed=4 mode=1/);
  await view.waitForCommand('(A:AUTOPILOT HEADING LOCK DIR, degrees) 10 + dnor near (>K:HEADING_BUG_SET)');
});

test('the wheel over a knob does not scroll the page', async () => {
  const {view} = shared;
  await view.page.setViewportSize({width: 1400, height: 500});
  await view.page.evaluate(() => scrollTo(0, 0));
  const knob = view.control('PFD', 'NAV_VOL');
  await knob.hover();
  const before = await view.page.evaluate(() => scrollY);
  await view.page.mouse.wheel(0, 240);
  await view.waitForCommand('(>H:AS1000_PFD_VOL_1_DEC)');
  assert.equal(await view.page.evaluate(() => scrollY), before);
  await view.page.setViewportSize({width: 1400, height: 1000});
});

test('a knob that is dragged round turns with the hand', async () => {
  const {view} = shared;
  const box = await view.control('PFD', 'CRS').boundingBox();
  const centre = {x: box.x + box.width / 2, y: box.y + box.height / 2};
  const at = (degrees) => [centre.x + 18 * Math.cos(degrees * Math.PI / 180), centre.y + 18 * Math.sin(degrees * Math.PI / 180)];
  await view.page.mouse.move(...at(-90));
  await view.page.mouse.down();
  for (let degrees = -90; degrees <= -40; degrees += 10) {
    await view.page.mouse.move(...at(degrees));
    await new Promise((resolve) => setTimeout(resolve, 60));
  }
  await view.page.mouse.up();
  await view.waitForCommand('(>H:AS1000_PFD_CRS_INC)', 3);
  assert.equal(await view.control('PFD', 'CRS').getAttribute('aria-valuenow'), '3');
  const turned = await view.control('PFD', 'CRS').evaluate((knob) => knob.style.getPropertyValue('--turn'));
  assert.equal(turned, '45deg');
});

test('the inner ring and the outer ring are two knobs', async () => {
  const {view} = shared;
  await view.control('MFD', 'FMS_INNER').hover();
  await view.page.mouse.wheel(0, -120);
  await view.waitForCommand('(>H:AS1000_MFD_FMS_Upper_INC)');
  await view.control('MFD', 'FMS_OUTER').hover({position: {x: 32, y: 5}});
  await view.page.mouse.wheel(0, -120);
  await view.waitForCommand('(>H:AS1000_MFD_FMS_Lower_INC)');
});

test('a knob says what it is and how far it is turned', async () => {
  const {view} = shared;
  const knob = view.page.getByRole('spinbutton', {name: 'ALT_INNER knob'}).first();
  assert.equal(await knob.getAttribute('aria-valuetext'), 'where it began');
  await knob.focus();
  await view.page.keyboard.press('ArrowDown');
  assert.equal(await knob.getAttribute('aria-valuetext'), '1 click left');
  await view.waitForCommand('100 (>K:AP_ALT_VAR_DEC)');
});
