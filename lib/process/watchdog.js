'use strict';

const { Worker } = require('node:worker_threads');

/**
 * Ends this process after so many milliseconds, on a thread of its own: also when a call of the system does not come back. Its
 * host does that as long as there is one.
 */
function endWithin(milliseconds) {
  new Worker(`setTimeout(() => process.kill(process.pid, 'SIGKILL'), ${milliseconds})`, { eval: true }).unref();
}

module.exports = { endWithin };
