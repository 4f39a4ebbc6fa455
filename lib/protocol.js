'use strict';

// What the two processes say to each other, one plain object a message:
//
//   { request: 3, call: 'start', given: {…} }             asks; either side may
//   { answer: 3, value: … }                                answers
//   { answer: 3, error: { code, message } }                answers that it could not be done
//   { event: 'segment', given: {…} }                       tells, without an answer

const { inTime } = require('./time');

/** One end of the conversation: numbers its questions, finds their answers, and answers the other end's questions. */
class Peer {
  #post;
  #calls;
  #told;
  #waiting = new Map();
  #count = 0;
  #closed;

  /**
   * @param {object} end
   * @param {(message: object) => void} end.post sends a message
   * @param {Record<string, (given: any) => any>} end.calls what the other end may ask for; a promise is waited for
   * @param {(event: string, given: any) => void} [end.told] hears events
   */
  constructor({ post, calls = {}, told = () => {} }) {
    this.#post = post;
    this.#calls = calls;
    this.#told = told;
  }

  /**
   * Asks the other end.
   * @param {number} within milliseconds until `onSilence` gives the error with which the promise is rejected
   */
  ask(call, given, within, onSilence) {
    if (this.#closed) {
      return Promise.reject(this.#closed);
    }
    const request = (this.#count += 1);
    const answer = new Promise((resolve, reject) => {
      this.#waiting.set(request, { resolve, reject });
      this.#post({ request, call, given });
    });
    return inTime(answer, within, onSilence).finally(() => this.#waiting.delete(request));
  }

  tell(event, given) {
    this.#post({ event, given });
  }

  /** Takes a message of the other end. What is none of the above is let go. */
  receive(message) {
    const { request, answer, event } = Object(message);
    if (request !== undefined) {
      this.#answer(message);
    } else if (answer !== undefined) {
      this.#answered(answer, message);
    } else if (event !== undefined) {
      this.#told(event, message.given);
    }
  }

  #answered(request, { value, error }) {
    const { resolve, reject } = this.#waiting.get(request) ?? {};
    if (error) {
      reject?.(error);
    } else {
      resolve?.(value);
    }
  }

  async #answer({ request, call, given }) {
    try {
      if (!Object.hasOwn(this.#calls, call)) {
        throw new Error(`there is no ${call}`);
      }
      this.#post({ answer: request, value: await this.#calls[call](given) });
    } catch ({ code, message }) {
      this.#post({ answer: request, error: { code, message } });
    }
  }

  /** The other end is gone: all that waits for it, and all that will ask it, is told this. */
  close(error) {
    this.#closed = error;
    this.#waiting.forEach(({ reject }) => reject(error));
  }
}

module.exports = { Peer };
