'use strict';

const STEP_MS = 10;

/**
 * Waits until `condition` gives something true and returns it; asynchronous conditions are awaited.
 * @throws {Error} that names `what` after `within` milliseconds
 */
async function waitFor(what, condition, within = 30000) {
  const end = Date.now() + within;
  for (;;) {
    const value = await condition();
    if (value) {
      return value;
    }
    if (Date.now() > end) {
      throw new Error(`not within ${within} ms: ${what}`);
    }
    await new Promise((resolve) => setTimeout(resolve, STEP_MS));
  }
}

module.exports = { waitFor };
