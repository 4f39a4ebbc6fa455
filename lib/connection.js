'use strict';

// The host's end of a recorder's process: what is asked of it and when, what it says, and that it is gone.

const { RecorderError } = require('./errors');
const { LogLines } = require('./log-lines');
const { Peer } = require('./protocol');
const { inTime, limit } = require('./time');

// A machine that is very busy, with a scanner that looks at every library, takes half a minute.
const LOAD_MS = 60_000;
// A process that is told to end completes its recording first.
const END_MS = 60_000;
// What was said before an answer, or before the end, is on its way.
const LAST_WORDS_MS = 2000;
const IDLE_MS = 5000;

/**
 * A process from its start to its end. It ends when nothing was asked of it for some seconds. It keeps the host alive only
 * while something is held or asked.
 */
class Connection {
  #child;
  #log;
  #peer;
  #listeners;
  #holds = 0;
  #idle = limit(IDLE_MS, () => this.close());
  #inbox = Promise.resolve();
  #loaded;
  #ended;
  #error;

  /**
   * @param {() => import('node:child_process').ChildProcess | import('./utility-child').UtilityChild} launch
   * @param {object} listeners
   * @param {(event: string, given: any) => void} [listeners.told] hears what the process tells
   * @param {Record<string, Function>} [listeners.calls] what the process may ask
   * @param {(entry: object) => void} [listeners.logged] hears each line of its log
   * @param {(error?: RecorderError) => void} listeners.gone is called once, when it can be asked no more; with an error unless
   *   it was told to end
   */
  constructor(launch, { told, calls, logged = () => {}, gone }) {
    this.#listeners = { gone };
    this.#log = new LogLines(logged);
    this.#peer = new Peer({ post: (message) => this.#post(message), calls, told });
    try {
      this.#child = launch();
      this.#ended = this.#listen();
    } catch (error) {
      // Whoever makes the connection must have it before it is gone.
      process.nextTick(() => this.#unlessStarted(error));
    }
    this.#keepHost(false);
  }

  get pid() {
    return this.#child?.pid;
  }

  /** A place in the log, for `failuresSince`. */
  get failures() {
    return this.#log.failureCount;
  }

  failuresSince(count) {
    return this.#log.failuresSince(count);
  }

  get log() {
    return this.#log.last;
  }

  /**
   * Asks the process for something.
   * @param {number} within milliseconds after which it counts as lost, and is ended
   * @throws {RecorderError}
   */
  async ask(call, given, within) {
    const before = this.failures;
    this.hold();
    try {
      this.#loaded ??= this.#askNow('load', undefined, LOAD_MS);
      await this.#loaded;
      return await this.#askNow(call, given, within);
    } catch (error) {
      throw this.#explained(error, before);
    } finally {
      this.release();
    }
  }

  #askNow(call, given, within) {
    return this.#peer.ask(call, given, within, () => this.giveUp(within));
  }

  /** Keeps the process and the host until it is released as often. */
  hold() {
    this.#holds += 1;
    this.#idle.stop();
    this.#keepHost(true);
  }

  release() {
    this.#holds -= 1;
    if (this.#holds === 0) {
      this.#keepHost(false);
      this.#idle.start();
    }
  }

  /** Lets the process complete what it does, and end; resolves when it has. */
  async close() {
    this.#idle.stop();
    this.#gone();
    if (this.#child?.connected) {
      this.#child.disconnect();
    }
    this.#keepHost(true);
    await inTime(this.#ended ?? Promise.resolve(), END_MS, () => this.#child.kill('SIGKILL')).catch(() => {});
  }

  /** Ends the process without letting it complete what it does; resolves when it has ended. */
  async kill() {
    this.#idle.stop();
    this.#gone();
    this.#keepHost(true);
    this.#child?.kill('SIGKILL');
    await this.#ended;
  }

  /** Ends a process that does not answer. */
  giveUp(within) {
    this.#child.kill('SIGKILL');
    const seconds = Number((within / 1000).toFixed(1));
    return this.#fail('ERR_RECORDER_TIMEOUT', `The recorder's process did not answer within ${seconds} s and was ended`);
  }

  #post(message) {
    if (this.#child?.connected) {
      // With a function that takes it, an error of the channel is not thrown at the host; the end of the process follows.
      this.#child.send(message, () => {});
    }
  }

  /** Resolves when the process has ended. */
  #listen() {
    const { stdout, stderr } = this.#child;
    stdout.setEncoding('utf8').on('data', (text) => this.#log.output(text));
    stderr.setEncoding('utf8').on('data', (text) => this.#log.errors(text));
    // Such an error is no more than an end.
    [stdout, stderr].forEach((stream) => stream.on('error', () => {}));
    this.#child.on('message', (message) => this.#take(message));
    this.#child.on('error', (error) => this.#unlessStarted(error));
    // Not the child's own `close`, which does not come after a `disconnect` from this side.
    const said = Promise.all([stdout, stderr].map((stream) => new Promise((resolve) => stream.once('close', resolve))));
    return new Promise((resolve) => {
      this.#child.once('exit', async (code, signal) => {
        await inTime(said, LAST_WORDS_MS, () => undefined).catch(() => {});
        this.#log.end();
        await this.#inbox;
        this.#fail('ERR_RECORDER_LOST', `The recorder's process ended unexpectedly, with ${signal ?? `code ${code}`}`);
        resolve();
      });
      this.#child.once('error', resolve);
    });
  }

  /** Takes messages in their order, an answer after what was logged before it. */
  #take(message) {
    const logged = () => inTime(this.#log.until(message.answer), LAST_WORDS_MS, () => undefined).catch(() => {});
    this.#inbox = this.#inbox.then(message?.answer === undefined ? undefined : logged).then(() => this.#peer.receive(message));
  }

  #unlessStarted({ message }) {
    if (this.pid === undefined) {
      this.#fail('ERR_RECORDER_SPAWN', `The recorder's process could not be started: ${message}`);
    }
  }

  #fail(code, sentence) {
    this.#error ??= new RecorderError(code, sentence, { log: this.log });
    this.#peer.close(this.#error);
    this.#gone(this.#error);
    return this.#error;
  }

  #gone(error) {
    const { gone } = this.#listeners;
    this.#listeners.gone = undefined;
    gone?.(error);
  }

  #keepHost(keep) {
    const { channel, stdout, stderr } = this.#child ?? {};
    [this.#child, channel, stdout, stderr].forEach((handle) => (keep ? handle?.ref?.() : handle?.unref?.()));
  }

  #explained(error, before) {
    if (error instanceof RecorderError) {
      return error;
    }
    const { code = 'ERR_RECORDER_FAILED', message } = error;
    return new RecorderError(code, message, { failures: this.failuresSince(before), log: this.log });
  }
}

module.exports = { Connection };
