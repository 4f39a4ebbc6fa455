'use strict';

const { Connection } = require('./connection');

// The encoders are opened to see whether they work, and a window of the desktop may be slow to give its title.
const ASK_MS = 30_000;

/** A process that lists and takes screenshots for all who ask; there is one while somebody does, and some seconds longer. */
class Shared {
  #launch;
  #connection;

  constructor(launch) {
    this.#launch = launch;
  }

  get pid() {
    return this.#connection?.pid;
  }

  /** @param {AbortSignal} [signal] lets the caller go; the process does what it was asked all the same */
  ask(call, given, signal) {
    if (signal?.aborted) {
      return Promise.reject(signal.reason);
    }
    this.#connection ??= new Connection(this.#launch, { gone: () => (this.#connection = undefined) });
    return unlessAborted(this.#connection.ask(call, given, ASK_MS), signal);
  }
}

function unlessAborted(promise, signal) {
  if (!signal) {
    return promise;
  }
  return new Promise((resolve, reject) => {
    const abort = () => reject(signal.reason);
    signal.addEventListener('abort', abort, { once: true });
    promise.then(resolve, reject).finally(() => signal.removeEventListener('abort', abort));
  });
}

module.exports = { Shared };
