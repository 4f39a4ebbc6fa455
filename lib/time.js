'use strict';

// Limits of time that count only while this process runs: a machine that slept, a debugger that held the process or a
// loop that was busy must not look like another process that does not answer.

const STEP_MS = 1000;

/**
 * Calls `whenOver` after so many milliseconds in which the event loop turned.
 * @returns {{start: () => void, stop: () => void}} `start` counts from now on, anew
 */
function limit(within, whenOver) {
  const step = Math.min(STEP_MS, within / 4);
  let ticks;
  let timer;
  const stop = () => clearInterval(timer);
  const start = () => {
    stop();
    ticks = 0;
    timer = setInterval(() => {
      ticks += 1;
      if (ticks * step >= within) {
        stop();
        whenOver();
      }
    }, step);
    timer.unref();
  };
  return { start, stop };
}

/** What the promise gives, or a rejection with what `onSilence` gives when that takes longer. */
function inTime(promise, within, onSilence) {
  return new Promise((resolve, reject) => {
    const bound = limit(within, () => reject(onSilence()));
    bound.start();
    promise.then(resolve, reject).finally(bound.stop);
  });
}

module.exports = { inTime, limit };
