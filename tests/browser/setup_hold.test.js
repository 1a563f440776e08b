// A control of a virtual board is down as long as it is held, and never longer.

import assert from 'node:assert/strict';
import {test} from 'node:test';
import {waitFor} from './support/cockpit.js';
import {SetupPage, withSetupPage} from './support/setup_page.js';

const shared = withSetupPage('--virtual-boards', '1');

// The events of a control, the latest first.
function eventsOf(control) {
  return shared.view.page.locator('#events .text').evaluateAll((texts, number) => texts
    .map(({textContent}) => textContent.split(': ')).filter(([name]) => name === number).map(([, text]) => text), String(control));
}

function come(control, ...texts) {
  return waitFor(async () => (await eventsOf(control)).join() === texts.join(), `control ${control}: ${texts}`);
}

test('the pointer holds it down, also beside it', async () => {
  const {page} = shared.view;
  await shared.view.key('virtual-1', 5).hover();
  await page.mouse.down();
  await come(5, 'hold', 'press');
  await page.mouse.move(0, 0);
  await shared.view.key('virtual-1', 5).and(page.locator('.down')).waitFor();
  assert.deepEqual(await eventsOf(5), ['hold', 'press']);
  await page.mouse.up();
  await come(5, 'release', 'hold', 'press');
});

test('a key holds it down', async () => {
  const {page} = shared.view;
  await shared.view.key('virtual-1', 7).focus();
  await page.keyboard.down(' ');
  await come(7, 'hold', 'press');
  await page.keyboard.up(' ');
  await come(7, 'release', 'hold', 'press');
});

test('it is released when the focus leaves, and when the tab is hidden', async () => {
  const {page} = shared.view;
  await shared.view.key('virtual-1', 21).focus();
  await page.keyboard.down('Enter');
  await come(21, 'hold', 'press');
  await page.locator('#control-search').focus();
  await come(21, 'release', 'hold', 'press');
  await page.keyboard.up('Enter');
  await shared.view.key('virtual-1', 22).focus();
  await page.keyboard.down('Enter');
  await come(22, 'hold', 'press');
  await page.evaluate(() => {
    Object.defineProperty(document, 'hidden', {value: true});
    document.dispatchEvent(new Event('visibilitychange'));
  });
  await come(22, 'release', 'hold', 'press');
  await page.keyboard.up('Enter');
});

test('it is released when its tab is gone', async () => {
  const other = await SetupPage.open(shared.browser, shared.run);
  await other.key('virtual-1', 23).hover();
  await other.page.mouse.down();
  await come(23, 'hold', 'press');
  await other.close();
  await come(23, 'release', 'hold', 'press');
});
