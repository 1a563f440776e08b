import assert from 'node:assert/strict';
import {readFileSync} from 'node:fs';
import {createRequire} from 'node:module';
import {test} from 'node:test';
import {SetupPage, withSetupPage} from './support/setup_page.js';

const shared = withSetupPage('--virtual-boards', '2');
const axePath = createRequire(import.meta.url).resolve('axe-core/axe.min.js');

// What axe-core finds, as texts.
async function faultsOf(view) {
  // The page's own policy forbids what the test adds.
  await view.page.evaluate((source) => { (0, eval)(source); }, readFileSync(axePath, 'utf8'));
  const {violations} = await view.page.evaluate(() => globalThis.axe.run());
  return violations.map(({id, nodes}) => `${id}: ${nodes.map(({html, failureSummary}) => `${html} ${failureSummary}`).join(' | ')}`);
}

async function withPage(options, use) {
  const view = await SetupPage.open(shared.browser, shared.run, {bypassCSP: true, ...options});
  try {
    await use(view);
  } finally {
    await view.close();
  }
}

async function fillPage(view) {
  await shared.run.act({do: 'sample'});
  await view.key('virtual-1', 21).click();
  await view.key('virtual-2', 93, 'clockwise').click();
  await view.page.locator('#events li').nth(2).waitFor();
}

for (const colorScheme of ['light', 'dark']) {
  test(`axe-core finds nothing on the ${colorScheme} page, its check-up, the dialogs and at a first start`, async () => {
    await withPage({colorScheme, reducedMotion: 'reduce'}, async (view) => {
      await view.page.locator('[data-board="virtual-2"]').waitFor();
      assert.deepEqual(await faultsOf(view), []);
      await fillPage(view);
      await view.openCheckUp();
      assert.deepEqual(await faultsOf(view), []);
      await view.button('Register the bridge').click();
      assert.deepEqual(await faultsOf(view), []);
      await view.button('No').click();
      await view.button('Assign SOFTKEY_1').click();
      await view.page.locator('#event-search').fill('heading');
      await view.page.locator('#command').fill('(>K:AP_MASTR');
      await view.page.locator('#remarks li').first().waitFor();
      assert.deepEqual(await faultsOf(view), []);
      await view.page.locator('#assign-dialog').getByRole('button', {name: 'Close'}).click();
      await view.page.locator('#review').click();
      await view.page.locator('#difference li').first().waitFor();
      assert.deepEqual(await faultsOf(view), []);
      await shared.run.act({do: 'undo'});
    });
  });
}

test('nothing stands out sideways at any width', async () => {
  await withPage({}, async (view) => {
    await fillPage(view);
    await view.openCheckUp();
    for (const width of [360, 600, 1024, 1920]) {
      await view.page.setViewportSize({width, height: 800});
      assert.ok(await view.page.evaluate(() => document.documentElement.scrollWidth) <= width, `at ${width}`);
      await view.button('Assign SOFTKEY_1').click();
      await view.page.locator('#event-search').fill('heading');
      const fits = await view.page.locator('#assign-dialog').evaluate((dialog) => dialog.scrollWidth <= dialog.clientWidth);
      assert.ok(fits, `the dialog at ${width}`);
      await view.page.locator('#assign-dialog').getByRole('button', {name: 'Close'}).click();
    }
    await shared.run.act({do: 'undo'});
  });
});

test('the keyboard alone names a control and assigns a command', async () => {
  await withPage({}, async (view) => {
    await view.key('virtual-1', 41).focus();
    await view.page.keyboard.press('Enter');
    await view.row(41).locator('input').focus();
    await view.page.keyboard.press('Control+A');
    await view.page.keyboard.type('DIRECT');
    await view.page.keyboard.press('Enter');
    await view.row(41).getByText('DIRECT', {exact: true}).waitFor();
    await view.button('Assign DIRECT').focus();
    await view.page.keyboard.press('Enter');
    await view.page.locator('#event-search:focus').waitFor();
    await view.page.keyboard.type('toggle autopilot master');
    await view.page.keyboard.press('Escape');
    assert.equal(await view.page.locator('#event-search').inputValue(), '');
    await view.page.locator('#command').focus();
    await view.page.keyboard.type('(>K:AP_MASTER)');
    await view.page.locator('#assign').focus();
    await view.page.keyboard.press('Enter');
    await view.waitForText('assign-status', /^Assigned/);
    await view.page.keyboard.press('Escape');
    await view.page.locator('#assign-dialog').waitFor({state: 'hidden'});
  });
});
