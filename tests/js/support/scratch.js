'use strict';

const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');

let root;
let count = 0;

/** The folder of this test run's files, removed at its end. */
function scratchDir() {
  if (!root) {
    root = fs.mkdtempSync(path.join(os.tmpdir(), 'brisolte-test-'));
    process.on('exit', () => fs.rmSync(root, { recursive: true, force: true, maxRetries: 5 }));
  }
  return root;
}

/** A path that no other file of this test run has. */
const scratchFile = (ending) => path.join(scratchDir(), `${(count += 1)}.${ending}`);

/** A new empty folder. */
function scratchFolder(name = `folder-${(count += 1)}`) {
  const folder = path.join(scratchDir(), name);
  fs.mkdirSync(folder, { recursive: true });
  return folder;
}

module.exports = { scratchDir, scratchFile, scratchFolder };
