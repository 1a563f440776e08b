// The names of actions and roles for people.

export const buttonActions = ['PRESS', 'HOLD', 'RELEASE'];
export const knobActions = ['CW', 'CCW', 'CW_FAST', 'CCW_FAST'];
export const everyRole = 'DEFAULT';

const actionWords = {
  PRESS: 'pressed', HOLD: 'held down', RELEASE: 'released', CW: 'turned clockwise', CCW: 'turned counter-clockwise',
  CW_FAST: 'turned clockwise fast', CCW_FAST: 'turned counter-clockwise fast',
};

export function actionText(action) { return actionWords[action] ?? action; }

export function roleText(role) { return role === everyRole ? 'every board' : role; }

export function controlText(control) { return control.name || `number ${control.number}`; }
