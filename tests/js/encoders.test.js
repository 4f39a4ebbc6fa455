'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { assertRecording, assertSize } = require('./support/check');
const { foreignLibrary, openPattern } = require('./support/desktop');
const media = require('./support/media');
const { record, recordAll } = require('./support/recording');
const { scenario } = require('./support/scenario');
const { scratchFolder } = require('./support/scratch');

const SIZE = { width: 320, height: 192 };

// `configured` is the tag of a stream whose decoder is configured before the first picture; the pictures of the others say
// all themselves.
const ENCODERS = [
  { name: 'libx264', container: 'mp4', log: 'MP4', codec: 'h264', formats: ['yuv420p'], configured: 'avc1' },
  { name: 'libx265', container: 'mp4', log: 'MP4', codec: 'hevc', formats: ['yuv420p'], configured: 'hvc1' },
  { name: 'mpeg4', container: 'mp4', log: 'MP4', codec: 'mpeg4', formats: ['yuv420p'], configured: 'mp4v' },
  { name: 'libvpx', container: 'webm', log: 'WebM', codec: 'vp8', formats: ['yuv420p'] },
  { name: 'libvpx-vp9', container: 'webm', log: 'WebM', codec: 'vp9', formats: ['yuv420p'] },
  { name: 'prores_ks', container: 'mov', log: 'MOV', codec: 'prores', formats: ['yuv422p10le'] },
  { name: 'mjpeg', container: 'avi', log: 'AVI', codec: 'mjpeg', formats: ['yuvj420p', 'yuv420p'] },
];

for (const { name, container, log, codec, formats, configured } of ENCODERS) {
  test(`${name} records ${codec} into ${container}`, async (t) => {
    const window = await openPattern(t, { title: 'Encoded', x: 40, y: 40, ...SIZE });
    const settings = [['setWindow', window.handle], ['setEncoder', name], ['setFrameRate', 20]]; // prettier-ignore
    const recording = await record({ window, settings, pictures: 70 });
    assert.equal(path.extname(recording.file), `.${container}`);
    assert.ok(recording.log.has('INFO', `Using ${log} container for encoder: ${name}`));
    const { video } = assertRecording(recording, { picture: window.picture, exact: false, tolerance: 20 });
    assert.equal(video.codec_name, codec);
    assert.ok(formats.includes(video.pix_fmt), video.pix_fmt);
    assertSize(video, SIZE);
    if (configured) {
      const [{ tag, bytes }] = media.configurations(recording.file);
      assert.equal(tag, configured);
      assert.ok(bytes > 0, 'the decoder finds no configuration');
    }
    assert.deepEqual(recording.log.errors, []);
  });
}

test('the file of an encoder that no list knows ends in mp4', async (t) => {
  const window = await openPattern(t, { title: 'Listed nowhere', ...SIZE });
  const { value, log } = await scenario(
    ({ Brisolte }, { dir, handle }) => {
      const capture = new Brisolte();
      capture.setOutputDir(dir);
      capture.setWindow(handle);
      return ['LIBX264', 'libx264 ', 'nonesuch', '', 'ffv1'].map((name) => {
        capture.setEncoder(name);
        capture.startRecord();
        capture.stopRecord();
        return capture.getSaveFilePath();
      });
    },
    { dir: scratchFolder(), handle: window.handle },
  );
  assert.deepEqual(value.map((file) => path.extname(file)), Array(5).fill('.mp4'));
  for (const name of ['LIBX264', 'libx264 ', 'nonesuch', '', 'ffv1']) {
    assert.ok(log.has('WARNING', `No supported container format found for encoder: ${name}`), name);
  }
});

test('an unknown encoder fails, and a good recording follows', async (t) => {
  const window = await openPattern(t, { title: 'Unknown encoder', ...SIZE });
  const names = ['nonesuch', 'LIBX264', '', 'libx264 ', 'h264_mf', 'a\0b', 'ü'.repeat(2000), 'libmp3lame'];
  const target = ['setWindow', window.handle];
  const bad = names.map((name) => ({ window, settings: [target, ['setEncoder', name]] }));
  const good = { window, pictures: 40, settings: [target, ['setEncoder', 'libx264']] };
  const { recordings } = await recordAll([...bad, good]);
  recordings.slice(0, -1).forEach(({ started, capturing, log, file }, i) => {
    assert.deepEqual([started, capturing], [false, false], names[i]);
    assert.notEqual(file, '', 'the path is kept');
    if (names[i] !== 'libmp3lame') {
      assert.ok(log.includes(`[ERROR] Encoder ${names[i].split('\0')[0]}`), log);
      assert.match(log, /\[ERROR\] Encoder .* not found!/s);
    }
    assert.match(log, /\[ERROR\] VideoCapture: ConfigureVideoStream failed/);
    assert.match(log, /\[ERROR\] Failed to create video capture/);
  });
  assertRecording(recordings.at(-1), { picture: window.picture, exact: false });
});

const HARDWARE = [
  ...['h264_nvenc', 'hevc_nvenc', 'av1_nvenc'],
  ...['h264_qsv', 'hevc_qsv', 'av1_qsv', 'vp9_qsv', 'mjpeg_qsv', 'mpeg2_qsv'],
];

test('an encoder of hardware that is not there fails with its text, and a good recording follows', async (t) => {
  const window = await openPattern(t, { title: 'No hardware', ...SIZE });
  const target = ['setWindow', window.handle];
  const bad = HARDWARE.map((name) => ({ window, settings: [target, ['setEncoder', name]] }));
  const good = { window, pictures: 40, settings: [target, ['setEncoder', 'libx264']] };
  const { recordings } = await recordAll([...bad, good]);
  recordings.slice(0, -1).forEach(({ started, capturing, log }, i) => {
    assert.deepEqual([started, capturing], [false, false], HARDWARE[i]);
    assert.ok(log.includes('[ERROR] Failed to open encoder: '), log);
    assert.match(log, /\[ERROR\] VideoCapture: ConfigureVideoStream failed/);
    assert.match(log, /\[ERROR\] Failed to create video capture/);
  });
  assertRecording(recordings.at(-1), { picture: window.picture, exact: false });
});

test("a library with a driver's name is not taken out of the current directory or a folder of PATH", async () => {
  const planted = ['libvpl.dll', 'libvplintel.dll'].map((name) => path.join(scratchFolder(), name));
  planted.forEach((file) => fs.copyFileSync(foreignLibrary, file));
  const { value } = await scenario(
    ({ Brisolte, require: load }, { here, onPath }) => {
      process.chdir(load('node:path').dirname(here));
      process.env.PATH = `${load('node:path').dirname(onPath)};${process.env.PATH}`;
      const found = new Brisolte().getSupportVideoCodec().length > 0;
      // One that has been loaded stays, and its file cannot be written.
      const free = [here, onPath].map((file) => {
        try {
          load('node:fs').closeSync(load('node:fs').openSync(file, 'r+'));
          return true;
        } catch {
          return false;
        }
      });
      return { found, free };
    },
    { here: planted[0], onPath: planted[1] },
  );
  assert.deepEqual(value, { found: true, free: [true, true] });
});
