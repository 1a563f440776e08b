const mostDetents = 127;

function isSameTurn(first, second) {
  return first.do === 'turn' && second.do === 'turn' && first.board === second.board &&
    first.control === second.control && first.speed === second.speed &&
    Math.sign(first.detents) === Math.sign(second.detents) && Math.abs(first.detents + second.detents) <= mostDetents;
}

// Turns of one knob that wait are sent as one.
export function joinTurns(last, action) {
  if (!isSameTurn(last, action)) {
    return false;
  }
  last.detents += action.detents;
  return true;
}
