import {spawn} from 'node:child_process';
import {dirname, join} from 'node:path';
import {test} from 'node:test';
import {waitFor} from './support/cockpit.js';
import {withSetupPage} from './support/setup_page.js';

const shared = withSetupPage('--virtual-boards', '1');

test('a bridge that the simulator started is named as such, and restarted from here after a question', async () => {
  const {view, folder} = shared;
  await view.key('virtual-1', 5).click();
  await view.name(5, 'AP');
  await view.assign('AP', '(>K:AP_MASTER)');
  await view.save();
  // With a console, so that it writes no log for this machine.
  const start = `"${join(dirname(process.env.VANTREL), 'VantrelBridgeHID')}" --console --config "${folder.config}"; true`;
  let simulator = null;
  try {
    // Again while another run of these tests has the machine's only bridge.
    await waitFor(async () => {
      if (simulator === null || simulator.exitCode !== null) {
        simulator = spawn('bash', ['-c', 'exec -a FlightSimulator2024.exe bash -c "$0"', start],
          {stdio: ['pipe', 'ignore', 'ignore'], detached: true});
      }
      return /^It was started by the simulator/.test(await view.text('bridge-note'));
    }, 'a bridge of the simulator');
    await view.page.locator('#bridge-restart').click();
    await view.page.locator('#ask-text').getByText(/It was started by the simulator. .*SIGTERM/).waitFor();
    await view.button('No').click();
    await view.waitForText('bridge-note', /^It was started by the simulator/);
    await view.page.locator('#bridge-restart').click();
    await view.button('Yes').click();
    await view.waitForText('bridge-note', /^It was started here/);
    await waitFor(() => simulator.exitCode === 0, 'the end of the other bridge');
  } finally {
    // With its bridge, if that still runs.
    if (simulator?.exitCode === null && simulator.signalCode === null) {
      process.kill(-simulator.pid);
    }
  }
  await view.page.locator('#bridge-end').click();
  await view.waitForText('bridge-state', /^not running/);
});
