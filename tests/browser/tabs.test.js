import assert from 'node:assert/strict';
import {test} from 'node:test';
import {limit, waitFor} from './support/cockpit.js';
import {withCockpitPage} from './support/cockpit_page.js';

const shared = withCockpitPage();
const linkIs = (page, text) => waitFor(async () => await page.locator('#link').textContent() === text, `the link ${text}`);

test('five tabs of a browser work, a sixth says why it doesn’t, and works once there is room', async () => {
  const {cockpit, view} = shared;
  const tabs = await Promise.all([...Array(4)].map(() => view.context.newPage()));
  for (const tab of tabs) {
    await tab.goto(cockpit.address);
    await linkIs(tab, 'live');
  }
  const sixth = await view.context.newPage();
  sixth.setDefaultTimeout(limit);
  await sixth.goto(cockpit.address);
  await sixth.getByText('open in five tabs already').waitFor();
  await view.page.bringToFront();
  await view.press('PFD', 'AP', '(>K:AP_MASTER)');
  await tabs.pop().close();
  await linkIs(sixth, 'live');
  assert.equal(await sixth.locator('#trouble').isVisible(), false);
  // The browser itself reports each refusal.
  view.errors.length = 0;
});
