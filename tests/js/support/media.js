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

/**
 * A file's container, streams and packets, as ffprobe tells them.
 * @returns {{format: object, streams: object[], video: object, packets: {ms: number, key: boolean}[], sounds: number[][]}}
 *   `video` is the first video stream and `packets` are its packets, `sounds` the times in milliseconds of the packets of each
 *   sound; all in file order
 */
function describe(file) {
  const { status, output, errors } = run('ffprobe', [
    ...['-v', 'error', '-show_entries', 'format:stream:packet=codec_type,stream_index,pts_time,flags', '-of', 'json', file],
  ]);
  assert.equal(status, 0, `ffprobe could not read ${file}: ${errors}`);
  const { format, streams, packets = [] } = JSON.parse(output);
  const timed = packets.map((packet) => ({ ...packet, ms: Number(packet.pts_time) * 1000 }));
  return {
    format,
    streams,
    video: streams.find((stream) => stream.codec_type === 'video'),
    packets: timed.filter((packet) => packet.codec_type === 'video').map(({ ms, flags }) => ({ ms, key: flags.startsWith('K') })),
    sounds: streams
      .filter((stream) => stream.codec_type === 'audio')
      .map(({ index }) => timed.filter((packet) => packet.stream_index === index).map(({ ms }) => ms)),
  };
}

/**
 * What the container tells the decoder of each stream, before anything of the stream is read.
 * @returns {{tag: string, bytes: number}[]} the tag of the codec and the size of its configuration
 */
function configurations(file) {
  // Otherwise ffprobe makes up for what is missing as it reads the first pictures.
  const words = ['-v', 'error', '-nofind_stream_info', '-show_entries', 'stream=codec_tag_string,extradata_size'];
  const { status, output, errors } = run('ffprobe', [...words, '-of', 'json', file]);
  assert.equal(status, 0, `ffprobe could not read ${file}: ${errors}`);
  return JSON.parse(output).streams.map(({ codec_tag_string: tag, extradata_size: bytes = 0 }) => ({ tag, bytes }));
}

const MATRICES = { bt709: 'bt709', bt470bg: 'bt601', smpte170m: 'bt601' };

/**
 * The decoded frames as { pixels, width, height }, three bytes a pixel: red, green, blue.
 * @param {object} [video] the stream as describe gives it, when it is known already
 * @param {boolean} [options.whole] false for a file that may break off; its last frame may be in pieces
 */
function frames(file, { width, height, color_space: space } = describe(file).video, { whole = true } = {}) {
  const raw = scratchFile('raw');
  // What the container says holds: FFmpeg's decoder of VP8, which has no field for it, always says BT.601.
  const matrix = MATRICES[space] ?? 'auto';
  const filters = `scale=in_color_matrix=${matrix}:out_range=pc,format=rgb24`;
  const words = ['-v', 'error', '-i', file, '-map', '0:v:0', '-vf', filters];
  // Frames keep their own times: on the grid of a guessed frame rate two could fall together.
  const times = ['-fps_mode', 'passthrough', '-enc_time_base', 'demux'];
  const { status, errors } = run('ffmpeg', ['-y', ...words, ...times, '-f', 'rawvideo', raw]);
  assert.equal(status, 0, `ffmpeg could not decode ${file}: ${errors}`);
  assert.ok(!whole || errors === '', `ffmpeg found errors in ${file}: ${errors}`);
  const all = fs.readFileSync(raw);
  fs.rmSync(raw);
  const size = width * height * 3;
  return Array.from({ length: all.length / size }, (_, i) => ({
    pixels: all.subarray(i * size, (i + 1) * size),
    width,
    height,
  }));
}

/**
 * The first channel of one sound of a file, decoded.
 * @param {number} index among the sounds of the file
 * @returns {{samples: Float32Array, rate: number, channels: number, codec: string, seconds: number}} `seconds` is the
 *   length of the stream as the container has it
 */
function sound(file, index = 0) {
  const streams = describe(file).streams.filter((stream) => stream.codec_type === 'audio');
  const { codec_name: codec, sample_rate: rate, channels, duration } = streams[index];
  const raw = scratchFile('raw');
  const words = ['-v', 'error', '-i', file, '-map', `0:a:${index}`, '-f', 'f32le', raw];
  const { status, errors } = run('ffmpeg', ['-y', ...words]);
  assert.equal(status, 0, `ffmpeg could not decode the sound of ${file}: ${errors}`);
  assert.equal(errors, '', `ffmpeg found errors in ${file}`);
  const bytes = fs.readFileSync(raw);
  fs.rmSync(raw);
  const all = new Float32Array(bytes.buffer, bytes.byteOffset, bytes.length / 4);
  const samples = all.filter((_, i) => i % channels === 0);
  return { samples, rate: Number(rate), channels, codec, seconds: Number(duration) };
}

/** Each of these files has a picture and can be decoded to its end, with its sounds, without a complaint. */
function assertWhole(files) {
  for (let from = 0; from < files.length; from += 20) {
    const some = files.slice(from, from + 20);
    const words = [...some.flatMap((file) => ['-i', file]), ...some.flatMap((_, i) => ['-map', `${i}:v:0`, '-map', `${i}:a?`])];
    const times = ['-fps_mode', 'passthrough', '-enc_time_base', 'demux'];
    const { status, errors } = run('ffmpeg', ['-v', 'error', ...words, ...times, '-f', 'null', '-']);
    assert.deepEqual([status, errors], [0, ''], `one of ${some} is not whole`);
  }
}

module.exports = { assertWhole, configurations, describe, frames, sound };
