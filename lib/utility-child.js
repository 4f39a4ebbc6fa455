'use strict';

const { EventEmitter } = require('node:events');
const { PassThrough } = require('node:stream');

/** A process of Electron's `utilityProcess`, with as much of a ChildProcess's manners as a connection needs. */
class UtilityChild extends EventEmitter {
  #process;
  #outputs;
  connected = true;
  stdout = new PassThrough();
  stderr = new PassThrough();

  /** @param {object} utilityProcess what `fork` gave, with its output piped */
  constructor(utilityProcess) {
    super();
    this.#process = utilityProcess;
    this.#outputs = [
      [utilityProcess.stdout, this.stdout],
      [utilityProcess.stderr, this.stderr],
    ];
    this.#outputs.forEach(([from, to]) => from.pipe(to));
    utilityProcess.on('message', (message) => this.emit('message', message));
    // Its exit follows.
    utilityProcess.on('error', () => {});
    utilityProcess.once('exit', (code) => this.#ended(code));
  }

  get pid() {
    return this.#process.pid;
  }

  send(message) {
    this.#process.postMessage(message);
  }

  /** Lets it end; there is no channel that could be closed. */
  disconnect() {
    this.connected = false;
    this.#process.postMessage({ event: 'end' });
  }

  kill() {
    return this.#process.kill();
  }

  // Electron lets go of its streams after the exit, and never closes them.
  #ended(code) {
    this.connected = false;
    this.#outputs.forEach(([from, to]) => {
      from.unpipe(to);
      to.end();
    });
    this.emit('exit', code, null);
  }
}

module.exports = { UtilityChild };
