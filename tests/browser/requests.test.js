import assert from 'node:assert/strict';
import {once} from 'node:events';
import {createServer, request as httpRequest} from 'node:http';
import {connect} from 'node:net';
import {after, before, test} from 'node:test';
import {Cockpit, launchBrowser, limit} from './support/cockpit.js';

let cockpit;
before(async () => { cockpit = await Cockpit.start(); });
after(async () => {
  await cockpit.stop();
  Cockpit.killLeftOvers();
});

const press = {do: 'press', board: 'PFD', control: 5};

// With any header, the host's too.
function rawRequest(path, headers, method = 'GET', body = '') {
  return new Promise((resolve, reject) => {
    const sent = httpRequest({host: '127.0.0.1', port: cockpit.port, path, method, headers}, (reply) => {
      reply.resume();
      resolve(reply.statusCode);
    });
    sent.on('error', reject);
    sent.end(body);
  });
}

test('the page itself needs no token and holds none', async () => {
  const reply = await cockpit.request('/', {token: ''});
  assert.equal(reply.status, 200);
  assert.equal((await reply.text()).includes(cockpit.token), false);
});

for (const [path, method] of [['/api/panel', 'GET'], ['/api/events', 'GET'], ['/api/action', 'POST']]) {
  test(`${path} is refused without the token, and with a wrong one`, async () => {
    const options = method === 'POST' ? {method, body: JSON.stringify(press), headers: {'Content-Type': 'application/json'}} : {};
    assert.equal((await cockpit.request(path, {...options, token: ''})).status, 403);
    assert.equal((await cockpit.request(path, {...options, token: '0'.repeat(32)})).status, 403);
    assert.equal((await cockpit.request(path, {...options, token: cockpit.token.slice(1)})).status, 403);
    assert.equal((await cockpit.request(path, {...options, token: `${cockpit.token}0`})).status, 403);
  });
}

test('another host’s name is refused, also with the token', async () => {
  for (const host of ['evil.example', `evil.example:${cockpit.port}`, `127.0.0.1.evil.example:${cockpit.port}`, '127.0.0.1']) {
    assert.equal(await rawRequest('/', {Host: host}), 403, host);
    assert.equal(await rawRequest('/api/panel', {'Host': host, 'X-Page-Token': cockpit.token}), 403, host);
  }
  assert.equal(await rawRequest('/', {Host: `localhost:${cockpit.port}`}), 200);
});

test('another origin is refused, also with the token', async () => {
  for (const origin of ['http://evil.example', 'null', 'http://127.0.0.1:1', `https://127.0.0.1:${cockpit.port}`]) {
    assert.equal((await cockpit.act(press, {Origin: origin})).status, 403, origin);
  }
  assert.equal((await cockpit.act(press, {Origin: cockpit.origin})).status, 200);
  assert.equal((await cockpit.act({...press, do: 'release'})).status, 200);
});

// A site of somebody else's on this machine, with no policy of its own that would hold its requests back.
async function withOtherSite(use) {
  const site = createServer((asked, answer) => answer.setHeader('Content-Type', 'text/html').end('<!doctype html><title>other</title>'));
  site.listen(0, '127.0.0.1');
  await once(site, 'listening');
  const browser = await launchBrowser();
  try {
    const page = await browser.newPage();
    await page.goto(`http://127.0.0.1:${site.address().port}/`);
    await use(page);
  } finally {
    await browser.close();
    site.close();
  }
}

// Everything that the program sends a page, up to the press of that control.
async function eventsUpToPressOf(control) {
  const reply = await cockpit.request('/api/events');
  const reader = reply.body.pipeThrough(new TextDecoderStream()).getReader();
  let text = '';
  while (!isPressIn(text, control)) {
    text += (await reader.read()).value;
  }
  await reader.cancel();
  return text;
}

function isPressIn(text, control) {
  return text.split('\n').some((line) => line.startsWith('data: ') && line.includes('"report"') &&
    JSON.parse(line.slice(6)).control === control);
}

test('a page of another origin can neither press a button nor read anything', async () => {
  await withOtherSite(async (page) => {
    const outcomes = await page.evaluate(async ([address, token]) => {
      const attempt = async (path, options) => {
        try {
          return (await fetch(address + path, options)).status;
        } catch {
          return 'blocked';
        }
      };
      const headers = {'X-Page-Token': token, 'Content-Type': 'application/json'};
      const body = '{"do":"press","board":"PFD","control":12}';
      return [
        await attempt('/api/panel', {headers}),
        await attempt('/api/action', {method: 'POST', headers, body}),
        await attempt('/api/action', {method: 'POST', body}),
      ];
    }, [cockpit.origin, cockpit.token]);
    assert.deepEqual(outcomes, ['blocked', 'blocked', 'blocked']);
  });
  const ofOurOwn = {...press, control: 13};
  const events = eventsUpToPressOf(ofOurOwn.control);
  assert.equal((await cockpit.act(ofOurOwn)).status, 200);
  assert.equal(isPressIn(await events, 12), false);
  assert.equal((await cockpit.act({...ofOurOwn, do: 'release'})).status, 200);
});

test('a form of another site, which sends no JSON, is refused', async () => {
  const reply = await cockpit.request('/api/action', {method: 'POST', body: JSON.stringify(press), headers: {'Content-Type': 'text/plain'}});
  assert.equal(reply.status, 415);
});

test('actions that make no sense are refused with the reason', async () => {
  for (const [action, reason] of [
    [{}, /unknown action ""/],
    [{do: 'explode'}, /unknown action "explode"/],
    [{do: 'press', board: 'PFD'}, /"control" is missing or out of its range/],
    [{do: 'press', board: 'PFD', control: 65536}, /"control" is missing or out of its range/],
    [{do: 'press', board: 'AUDIO', control: 5}, /there is no board AUDIO/],
    [{do: 'turn', board: 'PFD', control: 5, detents: 128, speed: 1}, /"detents"/],
    [{do: 'sim', on: true}, /"command" is missing/],
    [{do: 'sim', command: 'light bright'}, /Usage: light VALUE/],
  ]) {
    const reply = await cockpit.act(action);
    assert.equal(reply.status, 400, JSON.stringify(action));
    assert.match(await reply.text(), reason);
  }
});

test('what is no JSON, what is too long and what isn’t there is refused', async () => {
  const send = (body) => cockpit.request('/api/action', {method: 'POST', body, headers: {'Content-Type': 'application/json'}});
  assert.equal((await send('{"do":')).status, 400);
  assert.equal((await send(`{"do": "${'x'.repeat(5000)}"}`)).status, 413);
  assert.equal((await cockpit.request('/api/nothing')).status, 404);
  assert.equal((await cockpit.request('/nothing.html')).status, 404);
  assert.equal((await cockpit.request('/../../etc/passwd')).status, 404);
  assert.equal(await rawRequest('/../config/config.json', {}), 404);
});

test('every answer forbids framing, sniffing, caching and foreign sources', async () => {
  for (const path of ['/', '/main.js', '/api/panel', '/nothing.html']) {
    const {headers} = await cockpit.request(path);
    assert.match(headers.get('content-security-policy'), /default-src 'none'.*frame-ancestors 'none'/);
    assert.equal(headers.get('cache-control'), 'no-store');
    assert.equal(headers.get('x-content-type-options'), 'nosniff');
    assert.equal(headers.get('referrer-policy'), 'no-referrer');
    assert.equal(headers.get('access-control-allow-origin'), null);
  }
});

test('a request that comes late is answered', async () => {
  const late = connect(cockpit.port, '127.0.0.1');
  await once(late, 'connect');
  // A browser on a busy machine may take so long from its connection to its request.
  await new Promise((resolve) => setTimeout(resolve, 1500));
  late.write('GET / HTTP/1.1\r\n');
  await new Promise((resolve) => setTimeout(resolve, 1500));
  late.write(`Host: 127.0.0.1:${cockpit.port}\r\n\r\n`);
  const [answer] = await once(late, 'data', {signal: AbortSignal.timeout(limit)});
  assert.match(String(answer), /^HTTP\/1\.1 200 /);
  late.destroy();
});

test('slow connections don’t keep others waiting', async () => {
  const slow = Array.from({length: 60}, () => connect(cockpit.port, '127.0.0.1'));
  await Promise.all(slow.map((socket) => once(socket, 'connect')));
  // One letter of an endless header after the other.
  slow.forEach((socket) => socket.on('error', () => {}).write('GET / HTTP/1.1\r\nX-Slow: '));
  const trickle = setInterval(() => slow.forEach((socket) => socket.write('x')), 200);
  try {
    for (let i = 0; i < 5; ++i) {
      assert.equal((await cockpit.request('/', {signal: AbortSignal.timeout(limit)})).status, 200);
    }
  } finally {
    clearInterval(trickle);
    slow.forEach((socket) => socket.destroy());
  }
});
