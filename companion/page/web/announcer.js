// Announces to a screen reader what happens: of each subject only the latest, and not too often.
const pauseMs = 2000;

export class Announcer {
  #region;
  #waiting = new Map();
  #timer = null;

  constructor(region) {
    this.#region = region;
  }

  say(subject, text) {
    this.#waiting.set(subject, text);
    this.#timer ??= setTimeout(() => {
      this.#timer = null;
      this.#region.textContent = [...this.#waiting.values()].join('. ');
      this.#waiting.clear();
    }, this.#region.textContent === '' ? 0 : pauseMs);
  }
}
