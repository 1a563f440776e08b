import assert from 'node:assert/strict';
import {writeFileSync} from 'node:fs';
import {dirname, join} from 'node:path';
import {test} from 'node:test';
import {waitFor} from './support/cockpit.js';
import {withSetupPage} from './support/setup_page.js';

const shared = withSetupPage('--virtual-boards', '1');

function path(name) { return join(dirname(shared.folder.config), name); }

test('a refused change says why', async () => {
  const {view} = shared;
  await view.key('virtual-1', 21).click();
  await view.name(21, 'LEFT');
  await view.key('virtual-1', 22).click();
  await view.row(22).locator('input').fill('left');
  await view.row(22).getByRole('button', {name: 'Name it'}).click();
  await view.waitForText('trouble', /Control 21 already has this name/);
  view.errors.length = 0;
});

test('undo takes one step back at a time', async () => {
  const {view} = shared;
  await view.name(22, 'RIGHT');
  await view.assign('RIGHT', '(>K:AP_MASTER)');
  await view.page.locator('#undo').click();
  await view.row(22).getByText('no command').waitFor();
  await view.page.locator('#undo').click();
  await view.row(22).getByRole('button', {name: 'Name it'}).waitFor();
});

// Gives the page's link a `cutLink` that ends it.
function makeLinkCuttable() {
  const real = window.fetch;
  window.fetch = (path, options) => {
    const cut = new AbortController();
    window.cutLink = path === '/api/events' ? () => cut.abort() : window.cutLink;
    return real(path, {...options, signal: cut.signal});
  };
}

test('a user who leaves unsaved changes is asked, but not when the page finds its program again', async () => {
  const {page} = shared.view;
  const asked = [];
  page.on('dialog', (dialog) => {
    asked.push(dialog.type());
    dialog.accept();
  });
  await page.addInitScript(makeLinkCuttable);
  await page.reload();
  assert.deepEqual(asked, ['beforeunload']);
  await shared.view.waitForText('save-state', /^There is no configuration yet/);
  await page.locator('#control-search').click();
  const loaded = page.waitForEvent('load');
  await page.evaluate(() => window.cutLink());
  await loaded;
  await shared.view.waitForText('save-state', /^There is no configuration yet/);
  assert.deepEqual(asked, ['beforeunload']);
  page.removeAllListeners('dialog');
});

test('a command for one role leaves that of the others', async () => {
  const {view, folder} = shared;
  await view.assign('LEFT', '(>K:AP_MASTER)');
  await view.button('Assign LEFT').click();
  await view.page.locator('#role').selectOption('MFD');
  assert.equal(await view.page.locator('#command').inputValue(), '');
  await view.page.locator('#command').fill('(>K:AP_HDG_HOLD)');
  await view.page.locator('#assign').click();
  await view.waitForText('assign-status', /^Assigned/);
  await view.page.locator('#assign-dialog').getByRole('button', {name: 'Close'}).click();
  await view.save();
  assert.deepEqual(JSON.parse(folder.read('buttons.json')).buttons[0].commands,
    {PRESS: {DEFAULT: '(>K:AP_MASTER)', MFD: '(>K:AP_HDG_HOLD)'}});
});

test('pressing the control while its dialog is open chooses the action', async () => {
  const {view, run} = shared;
  await view.button('Assign LEFT').click();
  await view.page.locator('[name="action"][value="HOLD"]').check();
  await run.act({do: 'press', board: 'virtual-1', control: 21});
  await waitFor(() => view.page.locator('[name="action"][value="PRESS"]').isChecked());
  await run.act({do: 'release', board: 'virtual-1', control: 21});
  await view.page.locator('#assign-dialog').getByRole('button', {name: 'Close'}).click();
});

test('a file that someone else has changed is not overwritten', async () => {
  const {view, folder} = shared;
  await view.assign('LEFT', '(>K:AP_ALT_HOLD)');
  const other = folder.read('buttons.json').replace('AP_MASTER', 'AP_PANEL_ALTITUDE_HOLD');
  writeFileSync(path('buttons.json'), other);
  await view.waitForText('save-state', /buttons\.json was changed by another program/);
  await view.page.locator('#review').click();
  await view.page.locator('#save').click();
  await view.waitForText('review-status', /Nothing was written/);
  view.errors.length = 0;
  assert.equal(folder.read('buttons.json'), other);
  await view.page.locator('#review-dialog').getByRole('button', {name: 'Close'}).click();
  await view.page.locator('#reload').click();
  await view.button('Yes').click();
  await view.waitForText('save-state', /^Everything is saved/);
  await view.page.locator('#reload').waitFor({state: 'hidden'});
});

test('what the bridge would refuse is only saved when the user insists', async () => {
  const {view, folder, run} = shared;
  await run.act({do: 'ids', vendor: 'nonsense', product: '1'});
  await view.waitForText('verdict', /would not start/);
  await view.page.locator('#review').click();
  await view.page.locator('#save').click();
  await view.waitForText('review-status', /The bridge wouldn't start with this: Invalid VID\/PID/);
  view.errors.length = 0;
  assert.doesNotMatch(folder.read('config.json'), /nonsense/);
  await view.page.locator('#despite-errors').check();
  await view.page.locator('#save').click();
  await waitFor(() => folder.read('config.json').includes('nonsense'));
  assert.doesNotMatch(folder.read('config.json.bak'), /nonsense/);
});

test('a configuration that can not be edited is shown with the reason', async () => {
  const {view} = shared;
  writeFileSync(path('config.json'), '{');
  await view.waitForText('save-state', /was changed by another program/);
  await view.page.locator('#reload').click();
  await view.waitForText('save-state', /isn't JSON/);
  assert.doesNotMatch(await view.page.locator('#ids').textContent(), /undefined/);
  view.errors.length = 0;
  writeFileSync(path('config.json'), '{"mappings": {"buttonConfigPath": "buttons.json"}}');
  await view.page.locator('#reload').click();
  await view.waitForText('save-state', /^Everything is saved/);
});
