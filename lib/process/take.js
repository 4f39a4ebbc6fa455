'use strict';

// One file of a recording: a start and a stop of an instance of the module.

const fs = require('node:fs/promises');
const { setTimeout: delay } = require('node:timers/promises');
const { RecorderError } = require('../errors');
const { exists } = require('./place');
const { Stopwatch } = require('./stopwatch');

const secondNow = () => Math.floor(Date.now() / 1000);

// The file that this process began last, and when: one of the same second and folder would take its place.
const latest = { directory: undefined, second: undefined, file: undefined };

class Take {
  #instance;
  #recorded = new Stopwatch();
  file;

  /** @param {object} instance of the module, with its settings */
  constructor(instance) {
    this.#instance = instance;
  }

  /** @throws {RecorderError} when it does not start */
  async start(directory) {
    if (latest.directory === directory && latest.second === secondNow() && (await exists(latest.file))) {
      await delay(1000 - (Date.now() % 1000));
    }
    const started = this.#started();
    this.file = this.#instance.getSaveFilePath();
    Object.assign(latest, { directory, second: secondNow(), file: this.file });
    if (!started) {
      throw new RecorderError('ERR_RECORDER_START', 'The recording did not start');
    }
    this.#recorded.start();
  }

  #started() {
    try {
      return this.#instance.startRecord();
    } catch {
      // The log has the reason.
      return false;
    }
  }

  pause() {
    this.#recorded.stop();
    this.#instance.pauseRecord();
  }

  resume() {
    this.#instance.resumeRecord();
    this.#recorded.start();
  }

  /** How loud each sound was since the last time, { microphone, speaker }. */
  takeLevels() {
    return this.#instance.takeLevels();
  }

  stop() {
    this.#recorded.stop();
    this.#instance.stopRecord();
  }

  get seconds() {
    return this.#recorded.seconds;
  }

  /** What the file has by now. */
  async bytes() {
    const { size } = await fs.stat(this.file).catch(() => ({ size: 0 }));
    return size;
  }
}

module.exports = { Take };
