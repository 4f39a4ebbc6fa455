'use strict';

// The boxes of which an MP4 or MOV is made.

const FOLDERS = ['moov', 'trak', 'mdia', 'minf', 'stbl', 'edts', 'udta', 'dinf', 'mvex', 'moof', 'traf'];

/**
 * The names of a file's boxes in their order, each of those that hold others as [name, ...names].
 * @param {Buffer} bytes
 */
function boxesOf(bytes) {
  const boxes = [];
  for (let at = 0; at + 8 <= bytes.length; ) {
    const name = bytes.toString('latin1', at + 4, at + 8);
    const short = bytes.readUInt32BE(at);
    const [head, length] = short === 1 ? [16, Number(bytes.readBigUInt64BE(at + 8))] : [8, short || bytes.length - at];
    if (length < head) {
      throw new Error(`the box ${name} at ${at} says that it has ${length} bytes`);
    }
    boxes.push(FOLDERS.includes(name) ? [name, ...boxesOf(bytes.subarray(at + head, at + length))] : name);
    at += length;
  }
  return boxes;
}

module.exports = { boxesOf };
