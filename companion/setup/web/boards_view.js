// The connected boards, with their roles and, for virtual ones, something to press.

import {fetchJson} from './connection.js';
import {element, setText} from './dom.js';
import {lightAt, lightWords} from './light.js';
import {VirtualPanel} from './virtual_panel.js';
import {controlText} from './words.js';

function byId(id) { return document.getElementById(id); }

export class BoardsView {
  #carryOut;
  #operate;
  #cards = new Map();

  // `operate` sends what is done on virtual boards, in order.
  constructor(carryOut, operate) {
    this.#carryOut = carryOut;
    this.#operate = operate;
    byId('find-device').addEventListener('click', () => this.#showDevices());
  }

  show({boards, controls, configuration}) {
    const ids = `${configuration.vendorId}:${configuration.productId}`;
    setText(byId('ids'), boards.length === 0
      ? `No board with the ids ${ids} is plugged in. “Find my board” lists all devices; a virtual board needs no hardware.`
      : `Boards of this machine have the ids ${ids}.`);
    const names = new Map(controls.map((control) => [control.number, controlText(control)]));
    for (const [name, card] of this.#cards) {
      if (!boards.some((board) => board.name === name)) {
        card.root.remove();
        this.#cards.delete(name);
      }
    }
    for (const board of boards) {
      if (!this.#cards.has(board.name)) {
        this.#add(board);
      }
      this.#cards.get(board.name).show(board, names);
    }
  }

  #add(board) {
    const card = new BoardCard(board, this.#carryOut, this.#operate);
    this.#cards.set(board.name, card);
    byId('boards').append(card.root);
  }

  async #showDevices() {
    const devices = (await fetchJson('/api/devices')).filter(({opens}) => opens);
    const rows = devices.map((device) => element('li', {}, element('span', {'class': 'mono'},
      `${device.vendorId}:${device.productId}`), ` ${device.serial || device.path} `, this.#useButton(device)));
    byId('devices').replaceChildren(devices.length === 0
      ? element('p', {}, 'This machine has no HID device that may be opened. “vantrel boards --all” says why.')
      : element('ul', {'class': 'rows'}, ...rows));
    byId('devices').hidden = false;
  }

  #useButton({vendorId, productId}) {
    const button = element('button', {type: 'button'}, `Use ${vendorId}:${productId}`);
    button.addEventListener('click', async () => {
      if (await this.#carryOut({do: 'ids', vendor: vendorId, product: productId})) {
        byId('devices').hidden = true;
      }
    });
    return button;
  }
}

class BoardCard {
  #role = element('span', {'class': 'note'});
  #lamp = element('span', {'class': 'lamp', 'aria-hidden': 'true'});
  #lightText = element('span', {'class': 'note'});
  #light = null;
  #lightSince = 0;
  #frame = 0;
  #panel = null;

  constructor(board, carryOut, operate) {
    this.root = element('article', {'class': 'board', 'aria-label': `Board ${board.name}`, 'data-board': board.name});
    const head = element('header', {}, element('h3', {}, board.name), this.#role);
    this.#lamp.hidden = true;
    this.root.append(head);
    if (board.virtual) {
      const remove = element('button', {type: 'button'}, 'Unplug');
      remove.addEventListener('click', () => carryOut({do: 'removeBoard', board: board.name}));
      head.append(this.#lamp, this.#lightText, remove);
      this.#panel = new VirtualPanel(board.name, operate);
      this.root.append(this.#panel.root);
    } else {
      head.append(roleForm(board, carryOut));
    }
  }

  show(board, names) {
    const kind = board.virtual ? 'virtual' : 'connected';
    setText(this.#role, board.role ? `${kind}, role ${board.role}` : kind);
    this.#panel?.show(names);
    if (JSON.stringify(board.light) !== JSON.stringify(this.#light)) {
      this.#light = board.light;
      this.#lightSince = performance.now();
      cancelAnimationFrame(this.#frame);
      this.#lamp.hidden = board.light === null;
      setText(this.#lightText, board.light ? lightWords(board.light) : '');
      this.#glow();
    }
  }

  // Draws the light as long as the board is there and it pulses. Flashing isn't for everybody.
  #glow() {
    const isPulse = this.#light?.effect > 1 && !matchMedia('(prefers-reduced-motion: reduce)').matches;
    const strength = isPulse || this.#light?.effect === 1 ? lightAt(this.#light, performance.now() - this.#lightSince)
      : (this.#light?.effect ? this.#light.level / 100 : 0);
    this.#lamp.style.setProperty('--glow', strength.toFixed(2));
    if (isPulse && this.root.isConnected) {
      this.#frame = requestAnimationFrame(() => this.#glow());
    }
  }
}

function roleForm(board, carryOut) {
  const input = element('input', {size: '8', 'aria-label': `Role of ${board.name}`, value: board.role});
  const form = element('form', {'class': 'inline-form'}, input, element('button', {}, 'Set the role'));
  form.addEventListener('submit', (event) => {
    event.preventDefault();
    carryOut({do: 'role', board: board.name, role: input.value.trim()});
  });
  return form;
}
