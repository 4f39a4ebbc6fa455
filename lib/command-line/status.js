'use strict';

// What a person sees while a recording runs: one line that stays in its place on a terminal, a line a second elsewhere.

const UNITS = ['B', 'kB', 'MB', 'GB', 'TB'];

function bytesText(bytes) {
  const step = Math.min(Math.floor(Math.log10(Math.max(bytes, 1)) / 3), UNITS.length - 1);
  return `${(bytes / 1000 ** step).toFixed(step === 0 ? 0 : 1)} ${UNITS[step]}`;
}

function timeText(seconds) {
  const two = (number) => String(Math.floor(number)).padStart(2, '0');
  return `${two(seconds / 3600)}:${two((seconds / 60) % 60)}:${two(seconds % 60)}`;
}

function statusText({ seconds, bytes, freeBytes }) {
  const free = freeBytes === undefined ? '' : `, ${bytesText(freeBytes)} free`;
  return `${timeText(seconds)}, ${bytesText(bytes)}${free}`;
}

class StatusLine {
  #stream;
  #shown = 0;

  constructor(stream) {
    this.#stream = stream;
  }

  show(progress) {
    const text = `${progress.paused ? 'paused' : 'recording'} ${statusText(progress)}`;
    this.#stream.write(this.#stream.isTTY ? `\r${text.padEnd(this.#shown)}` : `${text}\n`);
    this.#shown = text.length;
  }

  /** Lets what comes next begin on a line of its own. */
  end() {
    if (this.#stream.isTTY && this.#shown > 0) {
      this.#stream.write('\n');
    }
    this.#shown = 0;
  }
}

module.exports = { bytesText, StatusLine, statusText, timeText };
