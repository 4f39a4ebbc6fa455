'use strict';

// Where a recording is put once it is complete.

const fs = require('node:fs/promises');
const path = require('node:path');
const { setTimeout: delay } = require('node:timers/promises');

const exists = (file) =>
  fs.access(file).then(
    () => true,
    () => false,
  );

/** The name of a segment: talk-001.mp4, talk-002.mp4 and so on for talk.mp4. */
function segmentName(name, number) {
  const ending = path.extname(name);
  return `${path.basename(name, ending)}-${String(number).padStart(3, '0')}${ending}`;
}

// A scanner or an indexer that has the file open is done soon.
const ATTEMPTS = 20;
const BETWEEN_MS = 100;
const MAY_PASS = ['EACCES', 'EBUSY', 'EPERM'];

/**
 * Gives a complete recording its name. It keeps its own when that cannot be.
 * @returns {Promise<{file: string, problem?: string}>} where it is, and why it is not where it should be
 */
async function putInPlace(from, to, overwrite) {
  if (!overwrite && (await exists(to))) {
    return { file: from, problem: `${to} exists` };
  }
  for (let attempt = 1; ; attempt += 1) {
    try {
      await fs.rename(from, to);
      return { file: to };
    } catch ({ code, message }) {
      if (attempt === ATTEMPTS || !MAY_PASS.includes(code)) {
        return { file: from, problem: message };
      }
    }
    await delay(BETWEEN_MS);
  }
}

module.exports = { exists, putInPlace, segmentName };
