'use strict';

// How long things may take, in milliseconds.

const LIMITS = {
  // A start takes a fraction of a second, and some seconds when a driver wakes up.
  start: 30_000,
  // To complete a file takes the longer the larger it is, since its index goes to its front: this, and what comes of its size.
  stop: 60_000,
  // The process tells of its progress each second, and before it begins or completes a file, for which the above holds.
  signOfLife: 20_000,
};
const SLOWEST_DISK_BYTES_PER_MS = 5000;

/** How long the end of a recording of this size may take. */
const stopLimit = (bytes, limits = LIMITS) => limits.stop + bytes / SLOWEST_DISK_BYTES_PER_MS;

module.exports = { LIMITS, stopLimit };
