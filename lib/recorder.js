'use strict';

const { EventEmitter } = require('node:events');
const fs = require('node:fs/promises');
const { Connection } = require('./connection');
const { playsWithoutEnd } = require('./containers');
const { RecorderError } = require('./errors');
const { launcher } = require('./launch');
const { LIMITS, stopLimit } = require('./limits');
const { LEVELS, recordingOf, screenshotOf, signalOf, volumeOf } = require('./options');
const { Shared } = require('./shared');
const { limit } = require('./time');

const SAME_SECOND = /^Cannot write to output file/;
const NO_HEADER = /Failed to write file header/;

const shared = new Shared(launcher);

/** How loud the sounds of a recording are recorded, by their names. */
const soundsOf = (wanted) =>
  Object.fromEntries(
    ['microphone', 'speaker'].filter((sound) => wanted[sound]).map((sound) => [sound, { volume: wanted[sound].volume, muted: false }]),
  );

/** Records in a process of its own; recorder.d.ts says what it does. */
class Recorder extends EventEmitter {
  #wanted;
  #sounds;
  #signal;
  #launcher;
  #limits;
  #connection;
  #refused = [];
  #starting;
  #closing;
  #recording;
  #result;

  /** What follows the options is for tests: how the process is started, and how long it may take. */
  constructor(options, { launcher: how = launcher, limits = {} } = {}) {
    super();
    this.#wanted = recordingOf(options);
    this.#sounds = soundsOf(this.#wanted);
    this.#signal = signalOf(options);
    this.#launcher = how;
    this.#limits = { ...LIMITS, ...limits };
  }

  static async monitors(options) {
    return shared.ask('list', 'monitors', signalOf(options));
  }

  static async windows(options) {
    return shared.ask('list', 'windows', signalOf(options));
  }

  static async microphones(options) {
    return shared.ask('list', 'microphones', signalOf(options));
  }

  static async speakers(options) {
    return shared.ask('list', 'speakers', signalOf(options));
  }

  static async encoders(options) {
    return shared.ask('list', 'encoders', signalOf(options));
  }

  static async screenshot(options, file) {
    const wanted = screenshotOf(options, file);
    await shared.ask('screenshot', wanted, signalOf(options));
    return wanted.file;
  }

  get pid() {
    return this.#connection?.pid;
  }

  get recording() {
    return this.#recording !== undefined;
  }

  get paused() {
    return this.#recording?.paused === true;
  }

  async start() {
    if (this.#starting || this.#recording) {
      throw new RecorderError('ERR_RECORDER_STATE', 'This recorder records already. Make another one for another recording');
    }
    this.#signal?.throwIfAborted();
    this.#starting = this.#start();
    try {
      await this.#starting;
    } finally {
      this.#starting = undefined;
    }
    if (this.#signal?.aborted) {
      await this.#end('aborted');
      throw this.#signal.reason;
    }
  }

  async #start() {
    try {
      await this.#startNow();
    } catch (error) {
      // What a start that failed has made stays open until its process ends.
      await this.#connection?.close();
      await this.#removeRefused();
      throw error;
    }
  }

  async #startNow() {
    const connection = this.#connect(await this.#launcher());
    const before = connection.failures;
    const ask = () => connection.ask('start', { ...this.#wanted, sounds: this.#sounds }, this.#limits.start);
    const { file } = await ask().catch((error) => {
      // A recording that began in the same second keeps a file of the name that this one would have. In the next second it
      // would have another.
      if (error.failures?.some((text) => SAME_SECOND.test(text))) {
        return ask();
      }
      throw error;
    });
    const failures = connection.failuresSince(before);
    if (failures.some((text) => NO_HEADER.test(text))) {
      await this.#abandon(connection, file);
      throw new RecorderError('ERR_RECORDER_START', 'The recording did not start', { failures, log: connection.log });
    }
    this.#begun(connection, file);
  }

  // Without a header nothing is recorded, though the module says so. Its process must not complete the file: that would give it
  // the name that was asked for, in place of a file that may have it.
  async #abandon(connection, file) {
    await connection.kill();
    await fs.rm(file, { force: true }).catch(() => {});
  }

  #connect(launch) {
    this.#connection ??= new Connection(launch, {
      calls: { progress: (progress) => this.#progress(progress) },
      told: (event, given) => this.#told[event]?.(given),
      logged: (entry) => this.#logged(entry),
      gone: (error) => this.#gone(error),
    });
    return this.#connection;
  }

  #begun(connection, file) {
    connection.hold();
    const abort = () => this.#end('aborted').catch(() => {});
    this.#signal?.addEventListener('abort', abort, { once: true });
    const forget = () => {
      this.#signal?.removeEventListener('abort', abort);
      connection.release();
    };
    this.#recording = { connection, file, done: [], latest: { seconds: 0, bytes: 0 }, failures: connection.failures, forget };
    this.#result = new Promise((resolve, reject) => Object.assign(this.#recording, { resolve, reject }));
    // Told by events as well: nobody has to wait for it.
    this.#result.catch(() => {});
    this.#watch(this.#limits.signOfLife);
    this.#tell('start', { file });
  }

  /** The recording counts as lost unless its process tells something within so many milliseconds. */
  #watch(within) {
    const { connection, watch, stopping } = this.#recording;
    watch?.stop();
    if (!stopping) {
      this.#recording.watch = limit(within, () => connection.giveUp(within));
      this.#recording.watch.start();
    }
  }

  async pause() {
    await this.#setPaused('pause');
  }

  async resume() {
    await this.#setPaused('resume');
  }

  async #setPaused(call) {
    await this.#starting;
    if (!this.#recording || this.#recording.stopping) {
      throw new RecorderError('ERR_RECORDER_STATE', 'Nothing is recorded. Call start first');
    }
    const recording = this.#recording;
    const { changed, file, seconds } = await recording.connection.ask(call, undefined, this.#limits.start);
    recording.paused = call === 'pause';
    if (changed && recording === this.#recording) {
      this.#tell(call, { file, seconds });
    }
  }

  async mute(sound) {
    await this.#adjust(sound, { muted: true });
  }

  async unmute(sound) {
    await this.#adjust(sound, { muted: false });
  }

  async setVolume(sound, volume) {
    await this.#adjust(sound, { volume: volumeOf(volume) });
  }

  async #adjust(sound, change) {
    if (!Object.hasOwn(this.#sounds, sound)) {
      const there = Object.keys(this.#sounds).join(' and ') || 'no sound';
      throw new TypeError(`${String(sound)} is not recorded; there is ${there}`);
    }
    Object.assign(this.#sounds[sound], change);
    await this.#starting;
    if (this.#recording && !this.#recording.stopping) {
      await this.#recording.connection.ask('adjust', this.#sounds, this.#limits.start);
    }
  }

  /** Completes the recording, or gives what became of the latest one. */
  async stop() {
    await this.#starting;
    if (!this.#result) {
      throw new RecorderError('ERR_RECORDER_STATE', 'Nothing was recorded. Call start first');
    }
    return this.#end('requested');
  }

  #end(reason) {
    if (this.#recording && !this.#recording.stopping) {
      const { connection, watch, latest } = this.#recording;
      watch.stop();
      this.#recording.stopping = connection.ask('stop', reason, stopLimit(latest.bytes, this.#limits)).then(
        (result) => this.#finish(result),
        (error) => this.#failed(error),
      );
    }
    return this.#result;
  }

  close() {
    return (this.#closing ??= this.#close().finally(() => (this.#closing = undefined)));
  }

  async #close() {
    if (this.#starting || this.#recording) {
      await this.stop().catch(() => {});
    }
    await this.#connection?.close();
    await this.#removeRefused();
  }

  // A file that has anything in it may be another recording's, which began in the same second.
  async #removeRefused() {
    for (const file of this.#refused.splice(0)) {
      const { size } = await fs.stat(file).catch(() => ({}));
      if (size === 0) {
        await fs.rm(file, { force: true }).catch(() => {});
      }
    }
  }

  #progress(progress) {
    if (this.#recording) {
      this.#recording.latest = progress;
      this.#recording.file = progress.file;
      this.#watch(this.#limits.signOfLife);
      this.#tell('progress', progress);
    }
  }

  #told = {
    // It hears nothing meanwhile.
    begins: () => this.#recording && this.#watch(this.#limits.start),
    completes: ({ bytes }) => this.#recording && this.#watch(stopLimit(bytes, this.#limits)),
    ended: (result) => this.#finish(result),
    segment: (segment) => {
      this.#recording?.done.push(segment.file);
      this.#tell('segment', segment);
    },
    warning: (warning) => this.#tell('warning', warning),
    refused: (file) => this.#refused.push(file),
  };

  #logged(entry) {
    if (entry.source !== 'brisolte' || LEVELS.indexOf(entry.level) >= LEVELS.indexOf(this.#wanted.logLevel)) {
      this.#tell('log', entry);
    }
  }

  #finish({ result, incomplete }) {
    if (!this.#recording) {
      return;
    }
    // On a disk that is full from the start also what needs no end has nothing to play.
    const isEmpty = result.bytes === 0;
    if (isEmpty || incomplete.length > 0) {
      const { connection, failures: before } = this.#recording;
      const files = isEmpty ? [] : result.files;
      const known = { failures: connection.failuresSince(before), log: connection.log, files };
      const sentence = `${isEmpty ? result.file : incomplete[0]} could not be completed`;
      this.#failed(new RecorderError('ERR_RECORDER_INCOMPLETE', sentence, known), { ...result, files });
      return;
    }
    const { resolve } = this.#over();
    resolve(result);
    this.#tell('stop', result);
  }

  #gone(error) {
    this.#connection = undefined;
    if (error && this.#recording) {
      const { done, file } = this.#recording;
      error.files = playsWithoutEnd({ ...this.#wanted, picture: this.#wanted.target }) ? [...done, file] : done;
      this.#failed(error);
    }
  }

  #failed(error, result) {
    if (!this.#recording) {
      return;
    }
    const { reject, file, done, latest } = this.#over();
    reject(error);
    // An `error` that nobody listens to would end the host, which must outlive its recorder.
    if (this.listenerCount('error') > 0) {
      this.#tell('error', error);
    }
    const { seconds, bytes } = latest;
    this.#tell('stop', { file, files: error.files ?? done, seconds, bytes, ...result, reason: 'failed' });
  }

  // What a listener throws is nobody's here: it goes where it would go from any other event, and nothing else is disturbed.
  #tell(event, given) {
    try {
      this.emit(event, given);
    } catch (error) {
      process.nextTick(() => {
        throw error;
      });
    }
  }

  #over() {
    const recording = this.#recording;
    this.#recording = undefined;
    recording.watch.stop();
    recording.forget();
    return recording;
  }
}

// Not there yet in the oldest of the Node.js versions.
if (Symbol.asyncDispose) {
  Recorder.prototype[Symbol.asyncDispose] = Recorder.prototype.close;
}

module.exports = { Recorder, RecorderError };
