'use strict';

const { Connection } = require('./connection');

// The encoders are opened to see whether they work, and a window of the desktop may be slow to give its title.
const ASK_MS = 30_000;

/** A process that lists and takes screenshots for all who ask; there is one while somebody does, and some seconds longer. */
class Shared {
  #launcher;
  #connection;

  /** @param {() => Promise<Function>} launcher gives what starts the process */
  constructor(launcher) {
    this.#launcher = launcher;
  }

  get pid() {
    return this.#connection?.pid;
  }

  /** @param {AbortSignal} [signal] lets the caller go; the process does what it was asked all the same */
  ask(call, given, signal) {
    if (signal?.aborted) {
      return Promise.reject(signal.reason);
    }
    return unlessAborted(this.#ask(call, given), signal);
  }

  async #ask(call, given) {
    const launch = await this.#launcher();
    this.#connection ??= new Connection(launch, { gone: () => (this.#connection = undefined) });
    return this.#connection.ask(call, given, ASK_MS);
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
