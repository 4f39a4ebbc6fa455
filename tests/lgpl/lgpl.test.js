'use strict';

// The package whose FFmpeg is under the LGPL: what it says of itself, and that it records with what it has.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { assertRecording } = require('../js/support/check');
const { openPattern } = require('../js/support/desktop');
const { loadSilently, packageFolder } = require('../js/support/package');
const { record } = require('../js/support/recording');
const { scenario } = require('../js/support/scenario');
const { scratchFolder } = require('../js/support/scratch');

const SIZE = { width: 320, height: 192 };

test('its licence field and its texts are those of the LGPL', () => {
  assert.equal(require(path.join(packageFolder, 'package.json')).license, 'MIT AND LGPL-2.1-or-later');
  const texts = fs.readdirSync(path.join(packageFolder, 'licenses'));
  assert.deepEqual(texts.filter((name) => /gpl|264|265/.test(name)), ['ffmpeg-lgpl-2.1.txt', 'openh264.txt']);
  const text = (name) => fs.readFileSync(path.join(packageFolder, 'licenses', name), 'utf8');
  assert.match(text('openh264.txt'), /Cisco Systems\s+All rights reserved\.\s+Redistribution and use/);
  const sources = [...text('SOURCES.md').matchAll(/^## (\S+) \S+$/gm)].map(([, name]) => name);
  assert.deepEqual(sources, ['ffmpeg', 'lame', 'libvpx', 'onevpl', 'openh264', 'opus']);
});

test('its FFmpeg says that it is under the LGPL, and has nothing of x264 and x265', () => {
  const folder = path.join(packageFolder, 'prebuilds', 'win32-x64');
  const libraries = fs.readdirSync(folder).filter((name) => name.endsWith('.dll'));
  assert.equal(libraries.length, 5);
  for (const name of libraries) {
    const code = fs.readFileSync(path.join(folder, name), 'latin1');
    assert.match(code, /\bLGPL version 2\.1 or later/, name);
    assert.doesNotMatch(code, /--enable-gpl|--enable-libx26|x264 - core|x265 \[/, name);
  }
});

test('it lists its encoders', () => {
  const Brisolte = loadSilently();
  const names = new Brisolte().getSupportVideoCodec().map(({ name }) => name);
  for (const name of ['libopenh264', 'libvpx', 'libvpx-vp9', 'mpeg4', 'mjpeg', 'prores']) {
    assert.ok(names.includes(name), `${name} is not in ${names}`);
  }
  assert.deepEqual(names.filter((name) => name.startsWith('libx26')), []);
});

for (const [name, extension, codec] of [['libopenh264', '.mp4', 'h264'], ['libvpx-vp9', '.webm', 'vp9'], ['mpeg4', '.mp4', 'mpeg4']]) {
  test(`it records with ${name}`, async (t) => {
    const window = await openPattern(t, { title: 'Encoded', x: 40, y: 40, ...SIZE });
    const settings = [['setWindow', window.handle], ['setEncoder', name], ['setFrameRate', 20]]; // prettier-ignore
    const recording = await record({ window, settings, pictures: 70 });
    assert.equal(path.extname(recording.file), extension);
    const { video } = assertRecording(recording, { picture: window.picture, exact: false, tolerance: 20 });
    assert.equal(video.codec_name, codec);
    assert.deepEqual(recording.log.errors, []);
  });
}

test('a start with an encoder that it does not have fails with an ERROR that names it', async (t) => {
  const window = await openPattern(t, { title: 'Refused', ...SIZE });
  const { value, log } = await scenario(
    ({ Brisolte }, { dir, handle }) => {
      const capture = new Brisolte();
      capture.setOutputDir(dir);
      capture.setWindow(handle);
      return ['libx264', 'libx265'].map((name) => [capture.setEncoder(name), capture.startRecord()]);
    },
    { dir: scratchFolder(), handle: window.handle },
  );
  assert.deepEqual(value, [[true, false], [true, false]]);
  for (const name of ['libx264', 'libx265']) {
    assert.ok(log.errors.includes(`Encoder ${name} not found!`), log.text);
  }
});
