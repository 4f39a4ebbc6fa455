'use strict';

// The output of a recorder's process, line by line. Standard output has the module's log, standard error has FFmpeg's words
// and those of Node.js.

const LINE = /^(\d{4})-(\d\d)-(\d\d) (\d\d):(\d\d):(\d\d) \[(DEBUG|INFO|WARNING|ERROR)\] (.*)$/;
const OF_FFMPEG = /^\[[^\]]+ @ [0-9a-fA-Fx]+\]/;

// A process writes such a mark before it answers a request, so that what it logged before the answer is known with it. It may
// fall into the middle of another thread's line, so it is made of characters that no language has.
const MARK = /\uE000(\d+)\uE001/g;
const markOf = (request) => `\uE000${request}\uE001`;

const KEPT = 50;

/** Makes entries { time, level, source, text } of what a process writes. */
class LogLines {
  #rest = { out: '', err: '' };
  #last = [];
  #errors = [];
  #errorCount = 0;
  #marks = new Set();
  #waiting = new Map();
  #heard;
  #ended = false;

  /** @param {(entry: object) => void} heard is given each entry */
  constructor(heard) {
    this.#heard = heard;
  }

  /** Takes more of the standard output. */
  output(text) {
    const known = this.#rest.out + text;
    this.#rest.out = this.#linesOf(known.replaceAll(MARK, ''), entryOfModule);
    [...known.matchAll(MARK)].forEach(([, request]) => this.#reached(Number(request)));
  }

  /** Takes more of the standard error. */
  errors(text) {
    this.#rest.err = this.#linesOf(this.#rest.err + text, entryOfOthers);
  }

  /** There will be no more. */
  end() {
    this.output('\n');
    this.errors('\n');
    this.#ended = true;
    this.#waiting.forEach((resolve) => resolve());
  }

  /** The latest entries. */
  get last() {
    return [...this.#last];
  }

  /** How many ERROR lines there were. */
  get failureCount() {
    return this.#errorCount;
  }

  /** The texts of the ERROR lines since there were so many, or of the latest of them. */
  failuresSince(count) {
    const more = this.#errorCount - count;
    return more > 0 ? this.#errors.slice(-more) : [];
  }

  /** Resolves when all is there that was logged before the answer to this request. */
  until(request) {
    if (this.#ended || this.#marks.delete(request)) {
      return Promise.resolve();
    }
    return new Promise((resolve) => this.#waiting.set(request, resolve));
  }

  #reached(request) {
    const resolve = this.#waiting.get(request);
    if (resolve) {
      this.#waiting.delete(request);
      resolve();
    } else {
      this.#marks.add(request);
    }
  }

  /** Takes the whole lines of a text and gives what is left of it. */
  #linesOf(text, entryOf) {
    const lines = text.split(/\r?\n/);
    const rest = lines.pop();
    // Windows' words for an error end with a line break of their own.
    lines.filter((line) => line.trim() !== '').forEach((line) => this.#entry(entryOf(line)));
    return rest;
  }

  #entry(entry) {
    this.#last = [...this.#last, entry].slice(-KEPT);
    if (entry.level === 'error' && entry.source === 'brisolte') {
      this.#errorCount += 1;
      this.#errors = [...this.#errors, entry.text].slice(-KEPT);
    }
    this.#heard(entry);
  }
}

function entryOfModule(line) {
  const found = LINE.exec(line);
  if (!found) {
    return { time: new Date(), level: 'info', source: 'brisolte', text: line };
  }
  const [year, month, ...rest] = found.slice(1, 7).map(Number);
  return { time: new Date(year, month - 1, ...rest), level: found[7].toLowerCase(), source: 'brisolte', text: found[8] };
}

const entryOfOthers = (line) => ({
  time: new Date(),
  level: 'info',
  source: OF_FFMPEG.test(line) ? 'ffmpeg' : 'node',
  text: line,
});

module.exports = { LogLines, markOf };
