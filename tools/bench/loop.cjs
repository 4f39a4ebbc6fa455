// Runs in Node.js for Windows under Wine: for how long the event loop does not turn, and how much of that it and Wine's server,
// which answers its calls of the system, waited for a processor that others had.

'use strict';

const fs = require('node:fs');
const { performance } = require('node:perf_hooks');

// Linux's own files, which Wine shows under this drive.
const PROCESSES = 'Z:\\proc';

/** The process whose command line begins with this and has that text in it, as Linux numbers it. */
function processOf(program, text = '') {
  const isIt = (id) => {
    try {
      const line = fs.readFileSync(`${PROCESSES}\\${id}\\cmdline`, 'utf8');
      return line.startsWith(program) && line.includes(text);
    } catch {
      return false; // it has just ended
    }
  };
  const [id, ...others] = fs.readdirSync(PROCESSES).filter((name) => /^\d+$/.test(name) && isIt(name));
  if (id === undefined || others.length > 0) {
    throw new Error(`not one process is ${program} ${text}: ${[id, ...others]}`);
  }
  return id;
}

/** How long the first thread of a process has been ready to run without a processor, in milliseconds. */
class ProcessorWait {
  #file;
  #text = Buffer.alloc(64);

  constructor(id) {
    this.#file = fs.openSync(`${PROCESSES}\\${id}\\schedstat`);
  }

  read() {
    // The time on a processor, the time without one, how often: the times in nanoseconds.
    const length = fs.readSync(this.#file, this.#text, 0, this.#text.length, 0);
    return Number(this.#text.toString('latin1', 0, length).split(' ')[1]) / 1e6;
  }
}

/** Watches the loop of this process from `start` until `stop`, which gives the longest pauses in milliseconds. */
class LoopWatch {
  #waits;
  #timer;
  #last;
  #found;

  constructor(ownArgument) {
    const ids = [processOf(process.execPath, ownArgument), processOf('/usr/lib/wine/wineserver')];
    this.#waits = ids.map((id) => new ProcessorWait(id));
  }

  start() {
    this.#found = { pauseMs: 0, ownPauseMs: 0 };
    this.#last = this.#now();
    this.#next();
  }

  stop() {
    clearTimeout(this.#timer);
    this.#note();
    return this.#found;
  }

  #next() {
    this.#timer = setTimeout(() => {
      this.#note();
      this.#next();
    }, 1).unref();
  }

  #now() {
    return { at: performance.now(), waited: this.#waits.reduce((sum, wait) => sum + wait.read(), 0) };
  }

  #note() {
    const now = this.#now();
    const pauseMs = now.at - this.#last.at;
    const ownPauseMs = pauseMs - (now.waited - this.#last.waited);
    this.#found = { pauseMs: Math.max(this.#found.pauseMs, pauseMs), ownPauseMs: Math.max(this.#found.ownPauseMs, ownPauseMs) };
    this.#last = now;
  }
}

module.exports = { LoopWatch };
