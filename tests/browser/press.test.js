import assert from 'node:assert/strict';
import {test} from 'node:test';
import {waitFor} from './support/cockpit.js';
import {withCockpitPage} from './support/cockpit_page.js';

const shared = withCockpitPage();

test('a button pressed on the page arrives as the command in the simulator’s list', async () => {
  const {view} = shared;
  await view.press('PFD', 'AP', '(>K:AP_MASTER)');
  assert.deepEqual(await view.commands(), [{kind: 'command', text: '(>K:AP_MASTER)', count: 1}]);
  await view.waitForLog(/action=BUTTON_PRESS role=PFD\(BUTTON\) controlId=5\(AP\)/);
  await view.waitForLog(/action=BUTTON_RELEASE role=PFD\(BUTTON\) controlId=5\(AP\)/);
});

test('the same button means something of its own on the other panel', async () => {
  const {view} = shared;
  await view.press('PFD', 'SOFTKEY_3', '(>H:AS1000_PFD_SOFTKEYS_3)');
  await view.press('MFD', 'SOFTKEY_3', '(>H:AS1000_MFD_SOFTKEYS_3)');
});

test('the path shows the press at each of its stations', async () => {
  const {view} = shared;
  await view.press('MFD', 'FPL', '(>H:AS1000_MFD_FPL_Push)');
  const station = (name) => view.page.locator(`[data-station="${name}"] .what`);
  await waitFor(async () => /FPL pressed/.test(await station('panel').textContent()));
  await waitFor(async () => await station('bridge').textContent() === '(>H:AS1000_MFD_FPL_Push)');
  await waitFor(async () => await station('simulator').textContent() === '(>H:AS1000_MFD_FPL_Push)');
  assert.equal(await view.control('MFD', 'FPL').evaluate((key) => key.classList.contains('used')), true);
});

test('a button that is held repeats its hold, and stops with the release', async () => {
  const {view} = shared;
  await view.control('PFD', 'CLR').hover();
  await view.page.mouse.down();
  await view.waitForCommand('(>H:AS1000_PFD_CLR_Long)', 3);
  assert.equal(await view.control('PFD', 'CLR').evaluate((key) => key.classList.contains('held')), true);
  await view.page.mouse.up();
  await waitFor(() => view.control('PFD', 'CLR').evaluate((key) => !key.classList.contains('held')));
  await view.waitForLog(/action=BUTTON_RELEASE role=PFD\(BUTTON\) controlId=45\(CLR\)/);
  const count = async () => (await view.commands()).at(-1).count;
  const after = await count();
  await new Promise((resolve) => setTimeout(resolve, 400));
  assert.equal(await count(), after);
});

test('a pan button moves the map for as long as it is held', async () => {
  const {view} = shared;
  await view.control('MFD', 'MAP_LEFT').hover();
  await view.page.mouse.down();
  await view.waitForCommand('(>H:AS1000_MFD_JOYSTICK_LEFT)', 10);
  await view.page.mouse.up();
  await view.waitForLog(/action=BUTTON_RELEASE role=MFD\(BUTTON\) controlId=65\(MAP_LEFT\)/);
});

test('space and enter press a button that has the focus, and release it', async () => {
  const {view} = shared;
  await view.control('PFD', 'MENU').focus();
  await view.pressKey('Enter', '(>H:AS1000_PFD_MENU_Push)');
  await view.control('PFD', 'ENT').focus();
  await view.pressKey('Space', '(>H:AS1000_PFD_ENT_Push)');
  await view.waitForLog(/action=BUTTON_RELEASE role=PFD\(BUTTON\) controlId=46\(ENT\)/);
});

test('a key of the keyboard that stays down holds the button', async () => {
  const {view} = shared;
  await view.control('PFD', 'COM_SWAP').focus();
  await view.page.keyboard.down('Space');
  await view.waitForCommand('(>H:AS1000_PFD_COM_Switch_Long)', 2);
  await view.page.keyboard.up('Space');
  await view.waitForLog(/action=BUTTON_RELEASE role=PFD\(BUTTON\) controlId=75\(COM_SWAP\)/);
  assert.equal((await view.commands()).filter(({text}) => text === '(>H:AS1000_PFD_COM_Switch)').length, 1);
});

test('a button that loses the focus while it is held is released', async () => {
  const {view} = shared;
  await view.control('PFD', 'PROC').focus();
  await view.page.keyboard.down('Space');
  await view.waitForCommand('(>H:AS1000_PFD_PROC_Push)');
  await view.control('PFD', 'FPL').focus();
  await view.page.keyboard.up('Space');
  await view.waitForLog(/action=BUTTON_RELEASE role=PFD\(BUTTON\) controlId=44\(PROC\)/);
});

test('a screen reader’s click presses and releases', async () => {
  const {view} = shared;
  await view.control('PFD', 'DIRECT_TO').evaluate((key) => key.click());
  await view.waitForLog(/action=BUTTON_PRESS role=PFD\(BUTTON\) controlId=41\(DIRECT_TO\)/);
  await view.waitForLog(/action=BUTTON_RELEASE role=PFD\(BUTTON\) controlId=41\(DIRECT_TO\)/);
});

test('buttons that are pressed one right after the other keep their order', async () => {
  const {view} = shared;
  const names = ['SOFTKEY_1', 'SOFTKEY_2', 'SOFTKEY_4', 'SOFTKEY_5', 'SOFTKEY_6', 'SOFTKEY_7'];
  const sendKeys = (kind) => view.boards('MFD').evaluate((root, [keys, event]) => {
    for (const name of keys) {
      root.querySelector(`[data-control="${name}"]`).dispatchEvent(new KeyboardEvent(event, {key: 'Enter', bubbles: true}));
    }
  }, [names, kind]);
  await sendKeys('keydown');
  await view.waitForCommand('(>H:AS1000_MFD_SOFTKEYS_7)');
  await sendKeys('keyup');
  assert.deepEqual((await view.commands()).slice(-6).map(({text}) => text),
    names.map((name) => `(>H:AS1000_MFD_${name.replace('SOFTKEY', 'SOFTKEYS')})`));
});

test('a page that closes with a button down leaves no button held', async () => {
  const {browser, cockpit, view} = shared;
  const {CockpitPage} = await import('./support/cockpit_page.js');
  const second = await CockpitPage.open(browser, cockpit);
  await second.control('MFD', 'COM_SWAP').hover();
  await second.page.mouse.down();
  await view.waitForCommand('(>H:AS1000_MFD_COM_Switch_Long)', 2);
  await second.close();
  await view.waitForLog(/action=BUTTON_RELEASE role=MFD\(BUTTON\) controlId=75\(COM_SWAP\)/);
});

test('a page that crashes with a button down leaves no button held, although another page is open', async () => {
  const {browser, cockpit, view} = shared;
  const {CockpitPage} = await import('./support/cockpit_page.js');
  const second = await CockpitPage.open(browser, cockpit);
  await second.control('PFD', 'COM_SWAP').hover();
  await second.page.mouse.down();
  await waitFor(() => view.control('PFD', 'COM_SWAP').evaluate((key) => key.classList.contains('held')));
  const crashed = second.page.waitForEvent('crash');
  second.page.goto('chrome://crash').catch(() => {});
  await crashed;
  await waitFor(() => view.control('PFD', 'COM_SWAP').evaluate((key) => !key.classList.contains('held')));
  await second.context.close();
});
