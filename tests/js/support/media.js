'use strict';

// Reads recordings back with FFmpeg's programs, which share nothing with the module under test.

const assert = require('node:assert/strict');
const { spawnSync } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');
const { scratchFile } = require('./scratch');

const folder = process.env.BRISOLTE_FFMPEG_TOOLS;
const program = (name) => (folder ? path.join(folder, process.platform === 'win32' ? `${name}.exe` : name) : name);

/** Runs a program with its output in files and gives it as { status, output, errors }. */
function run(name, words) {
  const [output, errors] = [scratchFile('out'), scratchFile('err')];
  const files = [output, errors].map((file) => fs.openSync(file, 'w'));
  const done = spawnSync(program(name), words, { stdio: ['ignore', ...files], windowsHide: true });
  files.forEach((file) => fs.closeSync(file));
  if (done.error) {
    throw done.error;
  }
  const result = { status: done.status, output: fs.readFileSync(output, 'utf8'), errors: fs.readFileSync(errors, 'utf8') };
  [output, errors].forEach((file) => fs.rmSync(file));
  return result;
}

function json(words) {
  const { status, output, errors } = run('ffprobe', ['-v', 'error', ...words, '-of', 'json']);
  assert.equal(status, 0, `ffprobe ${words.join(' ')}: ${errors}`);
  return JSON.parse(output);
}

/** A file's container and streams as ffprobe tells them, with `video` for the one video stream. */
function describe(file) {
  const { format, streams } = json(['-show_format', '-show_streams', file]);
  return { format, streams, video: streams.find((stream) => stream.codec_type === 'video') };
}

/** The video packets in file order: { ms, key, size }. */
function packets(file) {
  return json(['-select_streams', 'v:0', '-show_entries', 'packet=pts_time,flags,size', file]).packets.map((packet) => ({
    ms: Number(packet.pts_time) * 1000,
    key: packet.flags.startsWith('K'),
    size: Number(packet.size),
  }));
}

const FORMATS = { rgb: ['rgb24', 3], grey: ['gray', 1] };

/**
 * The decoded frames as { pixels, width, height }: three bytes a pixel for `rgb`, one for `grey`.
 * @param {number} [options.every] only each n-th frame, from the first
 */
function frames(file, kind, { every = 1 } = {}) {
  const [format, bytes] = FORMATS[kind];
  const { width, height } = describe(file).video;
  const raw = scratchFile('raw');
  const filters = [...(every > 1 ? [`select='not(mod(n,${every}))'`] : []), 'scale=out_range=pc', `format=${format}`];
  const words = ['-v', 'error', '-i', file, '-map', '0:v:0', '-vf', filters.join(','), '-fps_mode', 'passthrough'];
  const { status, errors } = run('ffmpeg', ['-y', ...words, '-f', 'rawvideo', raw]);
  assert.equal(status, 0, `ffmpeg could not decode ${file}: ${errors}`);
  assert.equal(errors, '', `ffmpeg found errors in ${file}`);
  const all = fs.readFileSync(raw);
  fs.rmSync(raw);
  const size = width * height * bytes;
  return Array.from({ length: all.length / size }, (_, i) => ({
    pixels: all.subarray(i * size, (i + 1) * size),
    width,
    height,
  }));
}

module.exports = { describe, frames, packets, run };
