'use strict';

const { performance } = require('node:perf_hooks');

/** Counts the seconds that are recorded: those in which it runs. */
class Stopwatch {
  #before = 0;
  #since;

  start() {
    this.#since ??= performance.now();
  }

  stop() {
    this.#before += this.#running;
    this.#since = undefined;
  }

  get seconds() {
    return (this.#before + this.#running) / 1000;
  }

  get #running() {
    return this.#since === undefined ? 0 : performance.now() - this.#since;
  }
}

module.exports = { Stopwatch };
