// The profiles of the boards' lights, one situation at a time.

import {element} from './dom.js';

const modes = {LVAR: 'follow the simulator', FIXED: 'always the same', OFF: 'dark'};
const effects = {OFF: 'off', STEADY: 'steady', BREATHE: 'breathe', FLASH: 'flash'};
const pulse = [['count', 'Count', 255], ['periodMs', 'Period in ms', 65535], ['level', 'Level in %', 100]];
const fieldsOf = {
  LVAR: [['min', 'Lowest in %', 100], ['max', 'Highest in %', 100], ['default', 'Before the first value, in %', 100],
    ['scale', 'Times the simulator’s value', 100, {min: '0.01', step: 'any'}]],
  FIXED: [['value', 'Level in %', 100]], STEADY: [['brightness', 'Level in %', 100]], BREATHE: pulse, FLASH: pulse,
};

function byId(id) { return document.getElementById(id); }

export class LightsView {
  #carryOut;
  #profiles = [];
  #shown = '';

  constructor(carryOut) {
    this.#carryOut = carryOut;
    byId('lights').addEventListener('submit', (event) => event.preventDefault());
    byId('profile').addEventListener('change', () => this.#draw());
    byId('light-part').addEventListener('change', () => this.#draw());
    byId('light-values').addEventListener('change', (event) => this.#set(event.target));
    byId('preview').addEventListener('click', () => carryOut({do: 'preview', ...this.#place()}));
  }

  show({configuration}) {
    this.#profiles = configuration.profiles ?? [];
    byId('lights-card').hidden = this.#profiles.length === 0;
    const names = this.#profiles.map(({name}) => name);
    if (names.join() !== [...byId('profile').options].map(({value}) => value).join()) {
      byId('profile').replaceChildren(...names.map((value) => element('option', {value}, value)));
    }
    this.#draw();
  }

  #place() { return {profile: byId('profile').value, part: byId('light-part').value}; }

  // Leaves the fields alone while they show what is true, so that the focus stays.
  #draw() {
    const {profile, part} = this.#place();
    const values = this.#profiles.find(({name}) => name === profile)?.[part];
    const shown = JSON.stringify([profile, part, values]);
    if (!values || shown === this.#shown) {
      return;
    }
    this.#shown = shown;
    const focused = document.activeElement.name;
    const isBacklight = part === 'backlight';
    const key = isBacklight ? 'mode' : 'effect';
    const fields = (fieldsOf[values[key]] ?? []).map(([name, label, max, more]) => numberField(name, label, max, values[name], more));
    byId('light-values').replaceChildren(choiceField(key, isBacklight ? modes : effects, values[key] || 'OFF'), ...fields);
    byId('light-values').querySelector(`[name="${focused}"]`)?.focus();
  }

  async #set(field) {
    const value = field.type === 'number' ? Number(field.value) : field.value.toLowerCase();
    if (field.reportValidity() && await this.#carryOut({do: 'profile', ...this.#place(), key: field.name, value})) {
      this.#carryOut({do: 'preview', ...this.#place()});
    }
  }
}

// Whole numbers from 0 unless `more` says otherwise.
function numberField(name, label, max, value, more = {}) {
  return element('label', {'class': 'field'}, `${label} `,
    element('input', {type: 'number', name, min: '0', max, value, required: '', ...more}));
}

function choiceField(name, choices, value) {
  const select = element('select', {name}, ...Object.entries(choices).map(([key, text]) => element('option', {value: key}, text)));
  select.value = value in choices ? value : Object.keys(choices)[0];
  return element('label', {'class': 'field'}, 'Light ', select);
}
