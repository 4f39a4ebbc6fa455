'use strict';

/** Whether a process of this machine is there. */
function isThere(pid) {
  try {
    process.kill(pid, 0);
    return true;
  } catch {
    return false;
  }
}

module.exports = { isThere };
