'use strict';

const STEP_MS = 10;

/**
 * Waits until `condition` gives something true and returns it; asynchronous conditions are awaited. Setting the computer's
 * clock changes nothing about how long it waits.
 * @throws {Error} that names `what` after `within` milliseconds
 */
async function waitFor(what, condition, within = 30000) {
  const end = performance.now() + within;
  for (;;) {
    const value = await condition();
    if (value) {
      return value;
    }
    if (performance.now() > end) {
      throw new Error(`not within ${within} ms: ${what}`);
    }
    await new Promise((resolve) => setTimeout(resolve, STEP_MS));
  }
}

module.exports = { waitFor };
