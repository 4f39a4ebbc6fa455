'use strict';

// How large a Recorder's picture is, and what its encoder is told.

const assert = require('node:assert/strict');
const { once } = require('node:events');
const path = require('node:path');
const { test } = require('node:test');
const { openPattern } = require('./support/desktop');
const media = require('./support/media');
const { packageFolder } = require('./support/package');
const { assertColour, QUARTERS } = require('./support/pattern');
const { scratchFolder } = require('./support/scratch');

const { Recorder } = require(path.join(packageFolder, 'recorder.js'));

async function recorderOf(t, options) {
  const window = await openPattern(t, { title: 'Of a size', x: 30, y: 30, width: 640, height: 360 });
  const recorder = new Recorder({ window: window.handle, directory: scratchFolder(), ...options });
  t.after(() => recorder.close());
  return recorder;
}

async function recorded(t, options) {
  const recorder = await recorderOf(t, options);
  await recorder.start();
  await once(recorder, 'progress');
  const { file } = await recorder.stop();
  await recorder.close();
  return file;
}

// Pixels of the picture at half its size, one in each quarter, where nothing moves.
const PLACES = [[30, 20], [290, 20], [30, 155], [290, 155]]; // prettier-ignore

for (const encoder of ['libx264', 'mjpeg']) {
  test(`a picture that is larger than it may be is made smaller, and shows the same: ${encoder}`, async (t) => {
    const file = await recorded(t, { encoder, scale: { width: 320, height: 1000 } });
    const { video } = media.describe(file);
    assert.deepEqual([video.width, video.height], [320, 180]);
    for (const frame of media.frames(file)) {
      PLACES.forEach(([left, top], i) => assertColour(frame, { left, top, right: left + 5, bottom: top + 5 }, QUARTERS[i]));
    }
  });
}

test('a picture that fits keeps its size', async (t) => {
  const { video } = media.describe(await recorded(t, { scale: { width: 4000, height: 360 } }));
  assert.deepEqual([video.width, video.height], [640, 360]);
});

test('the encoder is told what was chosen', async (t) => {
  const key = async (g) => {
    const { packets } = media.describe(await recorded(t, { encoderOptions: { g } }));
    return packets.length / packets.filter((packet) => packet.key).length;
  };
  assert.equal(await key(1), 1);
  assert.ok((await key(300)) > 5);
});

for (const [encoderOptions, cause] of [
  [{ crv: 20 }, /^Encoder libx264 has no option crv to choose; there are: .*\bcrf, /],
  [{ me_range: 16 }, /^Encoder libx264 has no option me_range to choose; /],
  [{ crf: 'low' }, /^Encoder libx264 refuses crf=low: Invalid argument$/],
  [{ preset: 'quick' }, /^Failed to open encoder: /],
]) {
  test(`a start is rejected with what is wrong with ${JSON.stringify(encoderOptions)}`, async (t) => {
    const recorder = await recorderOf(t, { encoderOptions });
    await assert.rejects(recorder.start(), (error) => {
      assert.equal(error.code, 'ERR_RECORDER_START');
      assert.match(error.failures[0], cause);
      return true;
    });
  });
}
