'use strict';

// One recording from its start to its stop: its limits, its segments and what the host is told of it.

const fs = require('node:fs/promises');
const path = require('node:path');
const { performance } = require('node:perf_hooks');
const { setTimeout: delay } = require('node:timers/promises');
const { RecorderError } = require('../errors');
const { warningOf } = require('../warnings');
const { isComplete } = require('./container');
const { exists, putInPlace, segmentName } = require('./place');
const { apply, LEVELS } = require('./settings');
const { Stopwatch } = require('./stopwatch');
const { Take } = require('./take');

const LOOK_MS = 250;
const TELL_MS = 1000;
const RETRY_MS = 10_000;
// A recording that has started waits for its first picture and sound, on a busy machine for some tenths of a second.
const OVERLAP_MS = 500;
// Lines of the log are written to a pipe, which holds 64 kB while nobody reads. A host that does not say within this time
// that it heard of the progress does not read; until it does again nothing is logged, or the pipe would halt the recording.
const HEARD_MS = 3000;

class Recording {
  #Brisolte;
  #wanted;
  #host;
  #instances = [];
  #take;
  #done = [];
  #recorded = new Stopwatch();
  #paused = false;
  #sounds;
  #ending;
  #work = Promise.resolve();
  #nextLook;
  #toldAt;
  #nextTry = 0;
  #unheard = false;
  #warned = new Set();

  /**
   * @param {Function} Brisolte the module's class
   * @param {object} wanted what options.js makes of a caller's options
   * @param {{tell: Function, ask: Function}} host hears `progress`, `segment`, `warning`, `ended`; `begins` and `completes`, with how many
   *   bytes, before a file is; and `refused`, with the file of a start that failed
   */
  constructor(Brisolte, wanted, host) {
    this.#Brisolte = Brisolte;
    this.#wanted = wanted;
    this.#host = host;
    this.#sounds = wanted.sounds;
  }

  get runs() {
    return this.#take !== undefined;
  }

  /** What all its files have by now. */
  async bytes() {
    return this.#bytesDone + ((await this.#take?.bytes()) ?? 0);
  }

  /** @returns {Promise<{file: string}>} where it is until it is complete */
  start() {
    return this.#alone(async () => {
      await this.#refuseExisting();
      this.#setLogLevel(this.#wanted.logLevel);
      this.#take = await this.#newTake(0);
      this.#recorded.start();
      this.#toldAt = performance.now();
      this.#lookIn(0);
      return { file: this.#take.file };
    });
  }

  /**
   * Completes it, and gives the same again and again.
   * @returns {Promise<{result: object, incomplete: string[]}>} { file, files, seconds, bytes, reason, problem }, and the files
   *   that could not be completed
   */
  stop(reason) {
    return (this.#ending ??= this.#alone(() => this.#end(reason)));
  }

  /**
   * Leaves out what happens until it is resumed.
   * @returns {Promise<{changed: boolean, file: string, seconds: number}>} changed: it was not paused
   */
  pause() {
    return this.#alone(() => this.#setPaused(true));
  }

  /** @returns {Promise<{changed: boolean, file: string, seconds: number}>} changed: it was paused */
  resume() {
    return this.#alone(() => this.#setPaused(false));
  }

  /** @param {Record<string, {volume: number, muted: boolean}>} sounds how loud each is recorded from now on */
  adjust(sounds) {
    this.#sounds = sounds;
    this.#instances.forEach((instance) => this.#adjustInstance(instance));
  }

  #adjustInstance(instance) {
    for (const [sound, { volume, muted }] of Object.entries(this.#sounds)) {
      instance.setVolume(sound, volume);
      instance.setMuted(sound, muted);
    }
  }

  #setPaused(paused) {
    if (!this.#take || this.#ending) {
      throw new RecorderError('ERR_RECORDER_STATE', 'The recording has ended');
    }
    const changed = paused !== this.#paused;
    this.#paused = paused;
    if (changed && paused) {
      this.#recorded.stop();
      this.#take.pause();
    }
    const { seconds } = this.#recorded;
    if (changed && !paused) {
      this.#recorded.start();
      this.#take.resume();
    }
    return { changed, file: this.#take.file, seconds };
  }

  // What takes a while must not meet something else that does.
  #alone(work) {
    const result = this.#work.then(work);
    this.#work = result.catch(() => {});
    return result;
  }

  async #refuseExisting() {
    const { name, overwrite, directory } = this.#wanted;
    const first = name && path.join(directory, this.#nameOf(0));
    if (first && !overwrite && (await exists(first))) {
      throw new RecorderError('ERR_RECORDER_EXISTS', `${first} exists. Give another file, or overwrite: true`);
    }
  }

  async #end(reason) {
    clearTimeout(this.#nextLook);
    this.#recorded.stop();
    const { seconds } = this.#recorded;
    if (this.#take) {
      const last = this.#take;
      this.#take = undefined;
      await this.#complete(last);
    }
    const { file } = this.#done.at(-1) ?? {};
    const incomplete = this.#done.filter(({ complete }) => !complete).map((each) => each.file);
    const files = this.#done.filter(({ complete }) => complete).map((each) => each.file);
    const { problem } = this.#done.find((each) => each.problem) ?? {};
    return { result: { file, files, seconds, bytes: this.#bytesDone, reason, problem }, incomplete };
  }

  get #bytesDone() {
    return this.#done.reduce((total, { bytes }) => total + bytes, 0);
  }

  /** What the file with this number, from 0, is called when it is complete; undefined when it keeps the module's name. */
  #nameOf(number) {
    const { name, segments } = this.#wanted;
    const segmented = segments.seconds !== undefined || segments.bytes !== undefined;
    return name && segmented ? segmentName(name, number + 1) : name;
  }

  /** Two of them take turns, so that a segment begins before the one before it ends. */
  #instance(number) {
    return (this.#instances[number % 2] ??= this.#newInstance());
  }

  #newInstance() {
    const instance = new this.#Brisolte();
    instance.onEvent((event) => this.#heard[event]?.());
    return instance;
  }

  // What an instance tells while it records.
  #heard = {
    cursorStays: () => this.#warn('cursorStays'),
    borderStays: () => this.#warn('borderStays'),
    diskFull: () => this.#alone(() => (this.#take && !this.#ending ? this.#endBy('freeBytes') : undefined)),
  };

  /** Once, though each segment finds the same. */
  #warn(code) {
    if (!this.#warned.has(code)) {
      this.#warned.add(code);
      this.#host.tell('warning', warningOf(code));
    }
  }

  async #newTake(number) {
    const instance = this.#instance(number);
    apply(instance, this.#wanted);
    this.#adjustInstance(instance);
    const take = new Take(instance);
    try {
      await take.start(this.#wanted.directory);
    } catch (error) {
      this.#host.tell('refused', take.file);
      throw error;
    }
    return take;
  }

  #lookIn(milliseconds) {
    this.#nextLook = setTimeout(() => this.#alone(() => this.#look()), milliseconds);
  }

  /** Looks after its limits, until the next look. */
  async #look() {
    if (this.#ending) {
      return;
    }
    const progress = await this.#progress();
    if (this.#ending) {
      return;
    }
    this.#tell(progress);
    const reason = this.#limitReached(progress);
    if (reason) {
      await this.#endBy(reason);
      return;
    }
    if (this.#isFull(progress)) {
      await this.#beginSegment();
    }
    this.#lookIn(this.#untilNextLook());
  }

  /** Ends by itself. */
  async #endBy(reason) {
    this.#ending = this.#end(reason);
    this.#host.tell('ended', await this.#ending);
  }

  async #progress() {
    // A disk that does not tell has no limit.
    const disk = await fs.statfs(this.#wanted.directory).catch(() => undefined);
    const freeBytes = disk && disk.bavail * disk.bsize;
    return { seconds: this.#recorded.seconds, paused: this.#paused, bytes: await this.bytes(), freeBytes, file: this.#take.file };
  }

  /** How loud the sounds that are recorded were since this was asked before. */
  get #levels() {
    const levels = this.#take.takeLevels();
    return Object.fromEntries(Object.keys(this.#sounds).map((sound) => [sound, levels[sound]]));
  }

  #limitReached(progress) {
    const { seconds, bytes, freeBytes } = this.#wanted.stopAfter;
    if (progress.seconds >= seconds) {
      return 'seconds';
    }
    return (progress.bytes >= bytes && 'bytes') || (progress.freeBytes < freeBytes && 'freeBytes');
  }

  #isFull(progress) {
    const { seconds = Infinity, bytes = Infinity } = this.#wanted.segments;
    // Files are named by the second in which they begin.
    return !this.#paused && this.#take.seconds >= 1 && performance.now() >= this.#nextTry && (this.#take.seconds >= seconds || progress.bytes - this.#bytesDone >= bytes);
  }

  async #beginSegment() {
    let next;
    this.#host.tell('begins');
    try {
      next = await this.#newTake(this.#done.length + 1);
    } catch {
      // The log says why. Nothing is lost: this segment goes on until another one can begin.
      this.#nextTry = performance.now() + RETRY_MS;
      return;
    }
    await delay(OVERLAP_MS);
    const full = this.#take;
    this.#take = next;
    const { file, seconds, bytes } = await this.#complete(full);
    this.#host.tell('segment', { file, seconds, bytes });
  }

  async #complete(take) {
    const name = this.#nameOf(this.#done.length);
    this.#host.tell('completes', { bytes: await take.bytes() });
    take.stop();
    const complete = await isComplete(take.file);
    const found = { file: take.file, seconds: take.seconds, bytes: await take.bytes(), complete };
    this.#done.push(found);
    if (name && complete) {
      Object.assign(found, await putInPlace(take.file, path.join(this.#wanted.directory, name), this.#wanted.overwrite));
    }
    return found;
  }

  #untilNextLook() {
    const { stopAfter, segments } = this.#wanted;
    const left = [stopAfter.seconds - this.#recorded.seconds, segments.seconds - this.#take.seconds].filter((seconds) => seconds > 0);
    return Math.min(LOOK_MS, ...left.map((seconds) => seconds * 1000));
  }

  #tell(progress) {
    const now = performance.now();
    if (this.#unheard || now - this.#toldAt < TELL_MS) {
      return;
    }
    this.#toldAt = now;
    this.#unheard = true;
    const silence = setTimeout(() => this.#setLogLevel('nothing'), HEARD_MS);
    this.#host
      .ask('progress', { ...progress, levels: this.#levels }, Infinity)
      .then(() => this.#setLogLevel(this.#wanted.logLevel))
      .finally(() => {
        clearTimeout(silence);
        this.#unheard = false;
      });
  }

  #setLogLevel(level) {
    this.#instance(0).setLogLevel(LEVELS[level]);
  }
}

module.exports = { Recording };
