'use strict';

// Electron's fuses: switches in its program, which are set when an application is packaged.

const fs = require('node:fs/promises');

// They lie behind this text: a version, how many there are, and a letter each.
const BEFORE_FUSES = Buffer.from('dL7pKGdnNz796PbbjQWNKmHXBZaB9tsX');
const RUN_AS_NODE = 2;
const OFF = '0'.charCodeAt();

const PIECE_BYTES = 1024 * 1024;

/**
 * Whether ELECTRON_RUN_AS_NODE makes Node.js of this program, which without that starts the application once more. Read from
 * the program, since nothing that a running Electron documents tells it. A program in which there are no fuses has it on.
 */
async function runsAsNode(program) {
  const at = BEFORE_FUSES.length + RUN_AS_NODE;
  let known = Buffer.alloc(0);
  for await (const piece of piecesOf(program)) {
    known = Buffer.concat([known, piece]);
    const found = known.indexOf(BEFORE_FUSES);
    if (found >= 0 && found + at < known.length) {
      return known[found + at] !== OFF;
    }
    known = known.subarray(-at);
  }
  return true;
}

async function* piecesOf(file) {
  const handle = await fs.open(file);
  try {
    for (;;) {
      const { buffer, bytesRead } = await handle.read({ buffer: Buffer.allocUnsafe(PIECE_BYTES) });
      if (bytesRead === 0) {
        return;
      }
      yield buffer.subarray(0, bytesRead);
    }
  } finally {
    await handle.close();
  }
}

module.exports = { runsAsNode };
