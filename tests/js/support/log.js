'use strict';

const fs = require('node:fs');
const { waitFor } = require('./wait');

const LINE = /^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \[(DEBUG|INFO|WARNING|ERROR)\] (.*)$/;

/** What a process wrote to its standard output, as the module's log lines. */
class Log {
  constructor(text) {
    this.text = text;
    this.entries = text
      .split(/\r?\n/)
      .map((line) => LINE.exec(line))
      .filter(Boolean)
      .map(([, level, message]) => ({ level, message }));
  }

  /** The messages of one level, in order. */
  messages(level) {
    return this.entries.filter((entry) => entry.level === level).map((entry) => entry.message);
  }

  get errors() {
    return this.messages('ERROR');
  }

  /** Whether a line of this level has exactly this message; a regular expression must match it. */
  has(level, message) {
    return this.messages(level).some((seen) => (message instanceof RegExp ? message.test(seen) : seen === message));
  }
}

/** The standard output of a process that still runs, which is a file. */
class LiveLog {
  constructor(file) {
    this.file = file;
  }

  /** Where the log ends now, for `since`. */
  mark() {
    return fs.statSync(this.file).size;
  }

  /** What was logged after a mark. */
  since(mark = 0) {
    return new Log(fs.readFileSync(this.file).subarray(mark).toString('utf8'));
  }

  /** Waits for a line that has this text somewhere. */
  line(text, mark = 0, within = 30000) {
    return waitFor(`the log line "${text}"`, () => this.since(mark).text.includes(text), within);
  }
}

module.exports = { Log, LiveLog };
