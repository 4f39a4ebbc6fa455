'use strict';

const { execFileSync } = require('node:child_process');
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

/** An existing folder in which nobody may create a file, for the time of a test. */
function readOnlyFolder(t) {
  if (process.env.BRISOLTE_READ_ONLY_DIR) {
    return process.env.BRISOLTE_READ_ONLY_DIR;
  }
  const folder = scratchFolder();
  const everyone = '*S-1-1-0';
  const change = (...words) => execFileSync('icacls', [folder, ...words], { stdio: 'ignore' });
  change('/deny', `${everyone}:(WD,AD)`);
  t.after(() => change('/remove:d', everyone));
  return folder;
}

/** The folder of a small disk that this test may fill; empty before and after it. */
function smallDisk(t) {
  const folder = process.env.BRISOLTE_SMALL_DISK;
  if (!folder) {
    throw new Error('BRISOLTE_SMALL_DISK must name a folder on a small disk of its own');
  }
  const empty = () => fs.readdirSync(folder).forEach((name) => fs.rmSync(path.join(folder, name), { recursive: true }));
  empty();
  t.after(empty);
  return folder;
}

/** What recordings into a folder that start within the next seconds are called. */
function namesOfTheNextSeconds(dir, seconds) {
  const two = (number) => String(number).padStart(2, '0');
  return Array.from({ length: seconds }, (_, i) => {
    const time = new Date(Date.now() + (i - 1) * 1000);
    const day = [time.getFullYear(), two(time.getMonth() + 1), two(time.getDate())];
    const parts = [...day, two(time.getHours()), two(time.getMinutes()), two(time.getSeconds())];
    return path.join(dir, `Qorvex-${parts.join('-')}.mp4`);
  });
}

/** Fills the disk of this folder but for so many bytes, and gives the file that does. */
function fillDisk(folder, room = 0) {
  const name = path.join(folder, 'filler');
  const file = fs.openSync(name, 'w');
  for (const size of [65536, 4096, 1]) {
    try {
      for (;;) {
        fs.writeSync(file, Buffer.alloc(size, 1));
      }
    } catch (error) {
      if (error.code !== 'ENOSPC') {
        throw error;
      }
    }
  }
  // On a full disk Wine refuses to cut a file to the size that it has.
  if (room > 0) {
    fs.ftruncateSync(file, fs.fstatSync(file).size - room);
  }
  fs.closeSync(file);
  return name;
}

module.exports = { fillDisk, namesOfTheNextSeconds, readOnlyFolder, scratchDir, scratchFile, scratchFolder, smallDisk };
