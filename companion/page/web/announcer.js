// Announces to a screen reader what the simulator received: only the latest, and not too often.
const pauseMs = 2000;

export class Announcer {
  #region;
  #waiting = '';
  #timer = null;

  constructor(region) {
    this.#region = region;
  }

  say(text) {
    this.#waiting = text;
    this.#timer ??= setTimeout(() => {
      this.#timer = null;
      this.#region.textContent = this.#waiting;
    }, this.#region.textContent === '' ? 0 : pauseMs);
  }
}
