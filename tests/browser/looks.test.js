import assert from 'node:assert/strict';
import {test} from 'node:test';
import {waitFor} from './support/cockpit.js';
import {CockpitPage, withCockpitPage} from './support/cockpit_page.js';

const shared = withCockpitPage();

async function withPage(options, use) {
  const opened = await CockpitPage.open(shared.browser, shared.cockpit, options);
  try {
    await use(opened);
  } finally {
    await opened.close();
  }
}

const brightness = (page, selector, property) => page.locator(selector).first().evaluate((target, name) => {
  // Whatever notation the browser gives the colour in, a canvas makes bytes of it.
  const canvas = document.createElement('canvas').getContext('2d');
  canvas.fillStyle = getComputedStyle(target)[name];
  canvas.fillRect(0, 0, 1, 1);
  const [red, green, blue] = canvas.getImageData(0, 0, 1, 1).data;
  return (red + green + blue) / 3;
}, property);

test('the system’s dark mode is the page’s', async () => {
  await withPage({colorScheme: 'dark'}, async ({page}) => {
    assert.ok(await brightness(page, 'body', 'backgroundColor') < 60);
    assert.ok(await brightness(page, 'body', 'color') > 180);
  });
});

test('the switch outranks the system, and is remembered', async () => {
  await withPage({colorScheme: 'light'}, async ({page}) => {
    assert.ok(await brightness(page, 'body', 'backgroundColor') > 200);
    await page.getByRole('radio', {name: 'Dark'}).check();
    assert.ok(await brightness(page, 'body', 'backgroundColor') < 60);
    await page.reload();
    await page.locator('.board').first().waitFor();
    assert.ok(await brightness(page, 'body', 'backgroundColor') < 60);
    await page.getByRole('radio', {name: 'Light'}).check();
    assert.ok(await brightness(page, 'body', 'backgroundColor') > 200);
  });
});

// A page that takes one width after the other.
async function atWidths(widths, check) {
  await withPage({}, async ({page}) => {
    for (const width of widths) {
      await page.setViewportSize({width, height: 800});
      await check(page, width);
    }
  });
}

test('nothing stands out sideways at any width', async () => {
  await atWidths([360, 412, 600, 768, 1024, 1280, 1920], async (page, width) => {
    assert.ok(await page.evaluate(() => document.documentElement.scrollWidth) <= width, `at ${width}`);
    const outside = await page.locator('.key, .knob, .station, .card').evaluateAll((targets, right) => targets
      .filter((target) => target.getBoundingClientRect().right > right + 0.5 || target.getBoundingClientRect().left < -0.5)
      .map((target) => target.dataset.control ?? target.className), width);
    assert.deepEqual(outside, [], `at ${width}`);
  });
});

test('what a display shows fills it, whatever its shape', async () => {
  await atWidths([360, 1024, 1920], async (page, width) => {
    const gaps = await page.locator('.art svg').evaluateAll((pictures) => pictures.filter((picture) => {
      const frame = picture.getBoundingClientRect();
      const corners = [[frame.left, frame.top], [frame.right, frame.top], [frame.left, frame.bottom], [frame.right, frame.bottom]];
      return !corners.every(([x, y]) => [...picture.querySelectorAll('rect[fill]')].some((shape) =>
        shape.isPointInFill(new DOMPoint(x, y).matrixTransform(shape.getScreenCTM().inverse()))));
    }).length);
    assert.equal(gaps, 0, `at ${width}`);
  });
});

// The contrast of a text's colour with the colour behind it, as the accessibility guidelines reckon it.
function contrast(first, second) {
  const light = ([red, green, blue]) => [[red, 0.2126], [green, 0.7152], [blue, 0.0722]].reduce((sum, [part, weight]) => {
    const share = part / 255;
    return sum + weight * (share <= 0.03928 ? share / 12.92 : ((share + 0.055) / 1.055) ** 2.4);
  }, 0);
  const [dark, bright] = [light(first), light(second)].sort((a, b) => a - b);
  return (bright + 0.05) / (dark + 0.05);
}

// Bytes of each colour in a CSS value, such as a gradient.
const coloursOf = (page, selector, property) => page.locator(selector).first().evaluate((target, name) => {
  const canvas = document.createElement('canvas').getContext('2d', {willReadFrequently: true});
  return getComputedStyle(target)[name].match(/(color|rgba?|oklab|lab)\([^()]*\)/g).map((colour) => {
    canvas.clearRect(0, 0, 1, 1);
    canvas.fillStyle = colour;
    canvas.fillRect(0, 0, 1, 1);
    return [...canvas.getImageData(0, 0, 1, 1).data].slice(0, 3);
  });
}, property);

test('legends and counts stand out from what is behind them, lit or not', async () => {
  for (const colorScheme of ['light', 'dark']) {
    await withPage({colorScheme, reducedMotion: 'reduce'}, async ({page}) => {
      await page.locator('[data-board="PFD"]').evaluate((root) => root.style.setProperty('--lit', 'var(--unlit)'));
      for (const [text, behind] of [['.key .legend', '.key'], ['.bezel .title', '.bezel']]) {
        const [ink] = await coloursOf(page, `[data-board="PFD"] ${text}`, 'color');
        for (const ground of await coloursOf(page, `[data-board="PFD"] ${behind}`, 'backgroundImage')) {
          assert.ok(contrast(ink, ground) >= 4.5, `${text} on ${ground}: ${contrast(ink, ground)}`);
        }
      }
      await page.locator('#received').evaluate((list) => list.insertAdjacentHTML('beforeend', '<li><span class="count">×2</span></li>'));
      const [count] = await coloursOf(page, '#received .count', 'color');
      const wash = await page.evaluate(() => {
        const probe = document.body.appendChild(document.createElement('i'));
        probe.id = 'wash';
        probe.style.backgroundColor = 'var(--live-wash)';
        return probe.id;
      });
      for (const ground of [await coloursOf(page, `#${wash}`, 'backgroundColor'), await coloursOf(page, '#received', 'backgroundColor')].flat()) {
        assert.ok(contrast(count, ground) >= 4.5, `the count on ${ground}: ${contrast(count, ground)}`);
      }
    });
  }
});

test('a finger or an unsteady hand can hit each control', async () => {
  await atWidths([360, 1280], async (page) => {
    const small = await page.locator('.bezel .key, .bezel .knob, button:visible, summary').evaluateAll((targets) => targets
      .filter((target) => Math.min(target.offsetWidth, target.offsetHeight) < 24).map((target) => target.outerHTML));
    assert.deepEqual(small, []);
    const rims = await page.locator('.rings').evaluateAll((rings) => rings.map((ring) =>
      (ring.querySelector('[data-part="outer"]').offsetWidth - ring.querySelector('[data-part="inner"]').offsetWidth) / 2));
    assert.ok(rims.length > 0 && Math.min(...rims) >= 24, `${rims}`);
  });
});

test('no control covers another one', async () => {
  await atWidths([360, 1280], async (page) => {
    const covered = await page.locator('.bezel .key, .bezel .knob').evaluateAll((targets) => targets.filter((target) => {
      target.scrollIntoView({block: 'center'});
      const box = target.getBoundingClientRect();
      // Rings lie on each other: an outer one is held at its rim.
      const y = target.dataset.part === 'outer' ? box.top + 4 : box.top + box.height / 2;
      return !target.contains(document.elementFromPoint(box.left + box.width / 2, y));
    }).map((target) => target.dataset.control));
    assert.deepEqual(covered, []);
  });
});

test('a finger presses a button and turns a knob', async () => {
  await withPage({viewport: {width: 360, height: 740}, hasTouch: true, isMobile: true}, async (phone) => {
    const touch = await phone.context.newCDPSession(phone.page);
    const send = (type, ...touchPoints) => touch.send('Input.dispatchTouchEvent', {type, touchPoints});
    const centreOf = async (control) => {
      await control.scrollIntoViewIfNeeded();
      const box = await control.boundingBox();
      return {x: box.x + box.width / 2, y: box.y + box.height / 2};
    };
    await send('touchStart', await centreOf(phone.control('PFD', 'AP_VS')));
    await phone.waitForCommand('(>K:AP_VS_HOLD)');
    await send('touchEnd');
    const {x, y} = await centreOf(phone.control('PFD', 'CRS'));
    await send('touchStart', {x, y: y - 20});
    await send('touchMove', {x: x + 14, y: y - 14});
    await send('touchMove', {x: x + 20, y});
    await send('touchEnd');
    await phone.waitForCommand('(>H:AS1000_PFD_CRS_INC)', 1);
    assert.ok(await phone.page.evaluate(() => document.documentElement.scrollWidth) <= 360);
  });
});

test('a swipe that begins on a key scrolls and presses nothing', async () => {
  await withPage({viewport: {width: 360, height: 740}, hasTouch: true, isMobile: true}, async (phone) => {
    const touch = await phone.context.newCDPSession(phone.page);
    const key = phone.control('PFD', 'SOFTKEY_9');
    await key.scrollIntoViewIfNeeded();
    const {x, y} = await key.boundingBox();
    const before = await phone.page.evaluate(() => scrollY);
    const send = (type, ...touchPoints) => touch.send('Input.dispatchTouchEvent', {type, touchPoints});
    // On a busy machine the swipe would be slow enough for a press.
    await phone.page.clock.install();
    await phone.page.clock.pauseAt(Date.now() + 60000);
    await send('touchStart', {x: x + 5, y: y + 5});
    for (let step = 1; step <= 10; ++step) {
      await send('touchMove', {x: x + 5, y: y + 5 - 15 * step});
    }
    await send('touchEnd');
    await waitFor(() => phone.page.evaluate((from) => scrollY > from + 50, before), 'the scrolling');
    await phone.page.clock.resume();
    // Were the swipe a press, it would have come before this one.
    await phone.control('PFD', 'SOFTKEY_10').tap();
    await phone.waitForLog(/action=BUTTON_PRESS role=PFD\(BUTTON\) controlId=\d+\(SOFTKEY_10\)/);
    assert.doesNotMatch(await phone.page.locator('#log').innerText(), /\(SOFTKEY_9\)/);
  });
});

test('on a phone the path of a press is in sight wherever a key is tapped', async () => {
  await withPage({viewport: {width: 360, height: 740}, hasTouch: true, isMobile: true}, async (phone) => {
    for (const name of ['AP_FLC', 'FMS_PUSH']) {
      await phone.control('MFD', name).tap();
      await waitFor(async () => (await phone.page.locator('[data-station="panel"] .what').textContent()) === `${name} pressed`);
      for (const station of ['panel', 'simulator']) {
        const box = await phone.page.locator(`[data-station="${station}"]`).boundingBox();
        assert.ok(box.y >= 0 && box.y + box.height <= 740, `${station} at ${box.y}`);
      }
    }
  });
});

test('everything that can be operated has a name for a screen reader', async () => {
  const {page} = shared.view;
  const nameless = await page.locator('button, input, [role="spinbutton"], ol[tabindex]').evaluateAll((targets) => targets
    .filter((target) => !(target.ariaLabel || target.textContent.trim() || target.labels?.[0]?.textContent.trim() ||
      document.getElementById(target.getAttribute('aria-labelledby'))?.textContent)).map((target) => target.outerHTML));
  assert.deepEqual(nameless, []);
  assert.equal(await page.locator('h1').count(), 1);
  assert.equal(await page.getByRole('main').count(), 1);
  assert.equal(await page.getByRole('switch', {name: 'Aircraft’s battery'}).count(), 1);
  assert.equal(await page.getByRole('slider', {name: 'Cockpit light'}).count(), 1);
  assert.equal(await page.getByRole('article', {name: 'PFD panel'}).count(), 1);
});

const focused = (page) => page.evaluate(() => [
  document.activeElement.dataset.control ?? document.activeElement.dataset.sim ?? document.activeElement.id ?? '',
  getComputedStyle(document.activeElement).outlineStyle]);

test('the tab key reaches panels, switches and lists in few steps, and shows where it is', async () => {
  const {page} = shared.view;
  await page.locator('.skip').focus();
  await page.keyboard.press('Enter');
  const seen = [];
  while (seen.at(-1) !== 'log') {
    await page.keyboard.press('Tab');
    const [name, outline] = await focused(page);
    seen.push(name);
    assert.notEqual(outline, 'none', `no outline round ${name}`);
    assert.ok(seen.length < 20, `not reached: ${seen}`);
  }
  assert.ok(seen.indexOf('battery') < 8, `${seen}`);
  const firstOfPanel = await shared.view.boards('PFD').locator('.key, .knob').first().getAttribute('data-control');
  for (const name of [firstOfPanel, 'battery', 'light', 'received', 'log']) {
    assert.ok(seen.includes(name), `${name} was not reached`);
  }
});

test('the arrow keys reach each control of a panel, and the tab key comes back to the last one', async () => {
  const {page} = shared.view;
  const names = await shared.view.boards('MFD').locator('.key, .knob').evaluateAll((all) => all.map((one) => one.dataset.control));
  await shared.view.control('MFD', names[0]).focus();
  for (const name of [...names.slice(1), names[0]]) {
    await page.keyboard.press('ArrowRight');
    const [reached, outline] = await focused(page);
    assert.equal(reached, name);
    assert.notEqual(outline, 'none', `no outline round ${name}`);
  }
  await page.keyboard.press('ArrowLeft');
  assert.equal((await focused(page))[0], names.at(-1));
  await page.keyboard.press('Shift+Tab');
  await page.keyboard.press('Tab');
  assert.equal((await focused(page))[0], names.at(-1));
  await page.keyboard.press('Home');
  assert.equal((await focused(page))[0], names[0]);
});

test('who wants less motion gets none from the page’s ornament, and still sees the panels’ light breathe', async () => {
  await withPage({reducedMotion: 'reduce'}, async (still) => {
    await still.press('PFD', 'AP_BC', '(>K:AP_BC_HOLD)');
    const durations = await still.page.evaluate(() => document.getAnimations()
      .map((animation) => animation.effect.getTiming().duration).filter((duration) => duration > 1));
    assert.deepEqual(durations, []);
    await still.toggle('battery');
    await still.effectIs('PFD', 'breathe');
    await still.levelsSeen('PFD', (levels) => levels.length > 3);
    await still.toggle('battery');
    await still.effectIs('PFD', 'steady');
  });
});

test('who wants less motion sees no light flash more than three times a second', async () => {
  await withPage({reducedMotion: 'reduce'}, async (still) => {
    await still.faultSwitch('refuse');
    await still.fault('drop');
    await still.effectIs('PFD', 'flash');
    // By a clock of our own: a busy machine draws too few frames to show each flash.
    await still.page.clock.install();
    await still.page.reload();
    await still.effectIs('PFD', 'flash');
    await still.boards('PFD').evaluate((root) => {
      window.flashes = [];
      const set = root.style.setProperty.bind(root.style);
      root.style.setProperty = (name, value) => {
        if (Number(value) > Number(root.style.getPropertyValue(name))) {
          window.flashes.push(performance.now());
        }
        set(name, value);
      };
    });
    await still.page.clock.runFor(5000);
    const flashes = await still.page.evaluate(() => window.flashes);
    assert.ok(flashes.length > 5, `${flashes.length} flashes`);
    const busiest = Math.max(...flashes.map((begin) => flashes.filter((moment) => moment >= begin && moment < begin + 1000).length));
    assert.ok(busiest <= 3, `${busiest} flashes in a second`);
    await still.faultSwitch('refuse');
    await shared.view.effectIs('PFD', 'steady');
  });
});

test('the log’s details can be put away', async () => {
  const {view} = shared;
  await view.control('PFD', 'AP').click();
  await view.waitForLog(/DEBUG\s+HID event from/);
  await view.page.locator('#details').click();
  assert.equal(await view.page.locator('#log [data-kind="debug"]').first().isVisible(), false);
  assert.equal(await view.page.locator('#log [data-kind="info"]').first().isVisible(), true);
  await view.page.locator('#details').click();
});

test('an address without its token says what is missing', async () => {
  const page = await shared.browser.newPage();
  await page.goto(shared.cockpit.origin);
  await page.getByText('This address is incomplete').waitFor();
  await page.close();
});

test('an address with another session’s token says so', async () => {
  const page = await shared.browser.newPage();
  await page.goto(`${shared.cockpit.origin}/#${'0'.repeat(32)}`);
  await page.getByText('The program refuses this page').waitFor();
  await page.close();
});

// What the page's live region says from now on.
async function announcements(page) {
  const said = [];
  await page.exposeFunction('noteSaid', (text) => said.push(text));
  await page.evaluate(() => new MutationObserver(() => window.noteSaid(document.getElementById('announcer').textContent))
    .observe(document.getElementById('announcer'), {childList: true}));
  return said;
}

test('what changes is read out: plugs, battery, session and light', async () => {
  await withPage({}, async (listening) => {
    const said = await announcements(listening.page);
    const isSaid = (pattern) => waitFor(() => said.some((text) => pattern.test(text)), String(pattern));
    await listening.boards('MFD').locator('.plug').click();
    await isSaid(/MFD unplugged/);
    await listening.boards('MFD').locator('.plug').click();
    await isSaid(/MFD plugged in/);
    await listening.toggle('battery');
    await isSaid(/Battery off/);
    await isSaid(/PFD light breathe/);
    await listening.toggle('battery');
    await isSaid(/Battery on/);
    await listening.faultSwitch('refuse');
    await listening.fault('drop');
    await isSaid(/No session/);
    await listening.faultSwitch('refuse');
    await isSaid(/Session open/);
  });
});

// Last, since it fills the lists.
test('what the simulator received is read out, and not each repeat of it', async () => {
  const {view} = shared;
  await view.effectIs('PFD', 'steady');
  const said = await announcements(view.page);
  await view.control('MFD', 'MAP_UP').hover();
  await view.page.mouse.down();
  await view.waitForCommand('(>H:AS1000_MFD_JOYSTICK_UP)', 30);
  await view.page.mouse.up();
  await waitFor(() => said.some((text) => /Simulator received \(>H:AS1000_MFD_JOYSTICK_UP\), \d+ times$/.test(text)));
  assert.ok(said.length <= 4, said.join('\n'));
});
