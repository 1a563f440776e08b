// Tells a screen reader what the simulator received, in moderation: the latest, and not more often than this.
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
