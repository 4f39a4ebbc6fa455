'use strict';

const { RecorderError } = require('../errors');
const { listOf } = require('./lists');
const { Recording } = require('./recording');
const { chooseTarget } = require('./settings');

/** What the process does for the one that started it. */
class Service {
  #host;
  #Brisolte;
  #shared;
  #recording;

  /** The orders it takes. */
  calls = {
    load: () => this.#load(),
    list: (kind) => listOf(this.#instance(), kind),
    screenshot: ({ target, file }) => this.#screenshot(target, file),
    start: (wanted) => this.#start(wanted),
    pause: () => this.#running().pause(),
    resume: () => this.#running().resume(),
    adjust: (sounds) => this.#running().adjust(sounds),
    stop: (reason) => this.#running().stop(reason),
  };

  /** @param {{tell: Function, ask: Function}} host the process that started this one */
  constructor(host) {
    this.#host = host;
  }

  /** How large what is recorded is by now. */
  async bytes() {
    return (await this.#recording?.bytes()) ?? 0;
  }

  /** Completes what is recorded. */
  async end() {
    await this.#recording?.stop('aborted');
  }

  #load() {
    try {
      this.#Brisolte ??= require('./engine').Brisolte;
    } catch ({ message }) {
      throw new RecorderError('ERR_RECORDER_LOAD', message);
    }
  }

  /** The instance that lists and takes screenshots; it has a Direct3D device of its own, so there is one. */
  #instance() {
    this.#load();
    return (this.#shared ??= new this.#Brisolte());
  }

  #screenshot(target, file) {
    const instance = this.#instance();
    chooseTarget(instance, target);
    if (!instance.captureScreenshot(file)) {
      throw new RecorderError('ERR_RECORDER_SCREENSHOT', 'The screenshot failed');
    }
  }

  async #start(wanted) {
    if (this.#recording?.runs) {
      throw new RecorderError('ERR_RECORDER_STATE', 'A recording runs in this process already');
    }
    this.#load();
    this.#recording = new Recording(this.#Brisolte, wanted, this.#host);
    return this.#recording.start();
  }

  #running() {
    if (!this.#recording) {
      throw new RecorderError('ERR_RECORDER_STATE', 'Nothing is recorded');
    }
    return this.#recording;
  }
}

module.exports = { Service };
