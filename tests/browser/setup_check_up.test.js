import assert from 'node:assert/strict';
import {existsSync, mkdirSync, readFileSync, rmSync, writeFileSync} from 'node:fs';
import {dirname, join} from 'node:path';
import {test} from 'node:test';
import {isDeepStrictEqual} from 'node:util';
import {waitFor} from './support/cockpit.js';
import {withSetupPage} from './support/setup_page.js';

const shared = withSetupPage('--virtual-boards', '1');

function row(text) { return shared.view.page.locator('#check-up-results li', {hasText: text}); }

// Each answer as a screen reader reads it, with its remedy.
function shown() {
  return shared.view.page.locator('#check-up-results li').evaluateAll((rows) => rows.map((item) =>
    [...item.querySelectorAll('p')].map((line) => line.textContent)));
}

test('it looks when it is opened, and says what the command says in the same order', async () => {
  const {view, folder} = shared;
  assert.deepEqual(await shown(), []);
  await view.openCheckUp();
  // Other tests may start and end a bridge meanwhile, which both say.
  await waitFor(async () => {
    await view.button('Look again').click();
    const expected = folder.doctor().map(({mark, title, found, remedy}) => [`${mark}: ${title}: ${found}`, remedy]);
    return isDeepStrictEqual(await shown(), expected);
  }, 'the answer of the command');
  assert.equal(await row('there is no ' + folder.config).locator('.mark').textContent(), '✗');
  await view.waitForText('check-up-state', /^\d+ faults?, \d+ warnings?$/);
});

test('why it can’t register is in sight', async () => {
  const {view, folder} = shared;
  await row(`there is no ${folder.exeXml}`).getByRole('button', {name: 'Register the bridge'}).click();
  await view.button('Yes').click();
  await view.waitForText('trouble', /^Save the configuration first/);
  const {top, bottom} = await view.page.locator('#trouble').evaluate((alert) => alert.getBoundingClientRect().toJSON());
  assert.ok(top >= 0 && bottom <= view.page.viewportSize().height, `${top} to ${bottom}`);
  view.errors.length = 0;
});

test('it registers the bridge after asking, and looks again', async () => {
  const {view, folder} = shared;
  await shared.run.act({do: 'sample'});
  await view.save();
  await row(`there is no ${folder.exeXml}`).getByRole('button', {name: 'Register the bridge'}).click();
  await view.button('No').click();
  assert.ok(!existsSync(folder.exeXml));
  await row(`there is no ${folder.exeXml}`).getByRole('button', {name: 'Register the bridge'}).click();
  await view.button('Yes').click();
  await row('good: MSFS 2020 (Steam), EXE.xml: the simulator starts').waitFor();
  assert.ok(readFileSync(folder.exeXml, 'utf8').includes('VantrelBridgeHID'));
  assert.equal(await view.page.evaluate(() => document.activeElement.id), 'check-up-again');
});

test('it looks again when asked to', async () => {
  const {view, folder} = shared;
  rmSync(folder.exeXml);
  await view.button('Look again').click();
  await row(`warning: MSFS 2020 (Steam), EXE.xml: there is no ${folder.exeXml}`).waitFor();
});

test('it makes a folder after asking, and looks again', async () => {
  const {view, folder} = shared;
  const simulator = dirname(folder.exeXml);
  writeFileSync(join(simulator, 'UserCfg.opt'), '');
  mkdirSync(join(simulator, 'Packages'));
  await view.button('Look again').click();
  await view.button('Make the folder Community').click();
  await view.page.locator('#ask-text').getByText(join(simulator, 'Packages', 'Community')).waitFor();
  await view.button('No').click();
  assert.ok(!existsSync(join(simulator, 'Packages', 'Community')));
  await view.button('Make the folder Community').click();
  await view.button('Yes').click();
  await row("it isn't in " + join(simulator, 'Packages', 'Community')).waitFor();
});
