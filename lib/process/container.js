'use strict';

// Whether a file was completed. The module says that only in its log, which goes to the host, who may be gone.

const fs = require('node:fs/promises');
const path = require('node:path');

const INDEXED = ['.mp4', '.m4a', '.mov'];
const HEAD_BYTES = 16;

/** An MP4 or MOV has an index, and fragments only while it is recorded. All others can be played up to where they end. */
async function isComplete(file) {
  return !INDEXED.includes(path.extname(file).toLowerCase()) || hasIndexAlone(file).catch(() => false);
}

const hasIndexAlone = async (file) => (await hasBox(file, 'moov')) && !(await hasBox(file, 'moof'));

/** Whether one of the boxes of which such a file is made has this name. */
async function hasBox(file, wanted) {
  const handle = await fs.open(file);
  try {
    const { size } = await handle.stat();
    const head = Buffer.alloc(HEAD_BYTES);
    for (let at = 0; at + 8 <= size; ) {
      await handle.read(head, 0, HEAD_BYTES, at);
      if (head.toString('latin1', 4, 8) === wanted) {
        return true;
      }
      const length = lengthOf(head);
      if (length < 8) {
        return false;
      }
      at += length;
    }
    return false;
  } finally {
    await handle.close();
  }
}

// 1 stands for a length that needs more bytes, 0 for a box that goes on to the end of the file.
function lengthOf(head) {
  const length = head.readUInt32BE(0);
  return length === 1 ? Number(head.readBigUInt64BE(8)) : length;
}

module.exports = { isComplete };
