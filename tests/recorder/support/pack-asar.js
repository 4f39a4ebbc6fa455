'use strict';

const fs = require('node:fs');

/** Packs scripts, { 'lib/a.js': text }, into an asar archive. */
function packAsar(archive, scripts) {
  const index = { files: {} };
  let offset = 0;
  for (const [name, text] of Object.entries(scripts)) {
    const folders = name.split('/');
    const last = folders.pop();
    const folder = folders.reduce((entry, each) => (entry.files[each] ??= { files: {} }), index);
    const size = Buffer.byteLength(text);
    folder.files[last] = { offset: String(offset), size };
    offset += size;
  }
  const json = Buffer.from(JSON.stringify(index));
  const lengths = [4, json.length + 8, json.length + 4, json.length];
  const head = Buffer.alloc(16);
  lengths.forEach((length, i) => head.writeUInt32LE(length, 4 * i));
  fs.writeFileSync(archive, Buffer.concat([head, json, ...Object.values(scripts).map((text) => Buffer.from(text))]));
}

module.exports = { packAsar };
