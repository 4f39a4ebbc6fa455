'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { assertRecording } = require('./support/check');
const { openPattern } = require('./support/desktop');
const { frames } = require('./support/media');
const { assertPicture } = require('./support/pattern');
const { record } = require('./support/recording');

const SOURCE_FPS = 60;

// How much nearer than its interval a frame may follow another: a fifth, in whole milliseconds.
const nearest = (fps) => Math.trunc(Math.trunc(1000 / fps) * 0.8);

for (const { fps, pictures } of [
  { fps: 1, pictures: 200 },
  { fps: 15, pictures: 150 },
  { fps: 30, pictures: 150 },
  { fps: 60, pictures: 120 },
  { fps: 120, pictures: 120 },
]) {
  test(`frames are paced to ${fps} a second`, async (t) => {
    const window = await openPattern(t, { title: 'Paced', x: 20, y: 20, width: 320, height: 192, fps: SOURCE_FPS });
    const settings = [['setWindow', window.handle], ['setFrameRate', fps]]; // prettier-ignore
    const recording = await record({ window, settings, pictures });
    const { packets, numbers } = assertRecording(recording, { picture: window.picture });

    const gaps = packets.slice(1).map(({ ms }, i) => Math.round(ms - packets[i].ms));
    assert.ok(gaps.every((gap) => gap >= nearest(fps)), `nearer than ${nearest(fps)} ms: ${gaps}`);
    assert.ok(packets.length >= 3, `${packets.length} frames`);

    const [before, after] = recording.painted;
    assert.ok(packets.length <= after - before + 2, 'more frames than the source painted');
    assert.equal(new Set(numbers).size, numbers.length, 'no picture is recorded twice');
    assertKeyFrames(packets, fps);
    assertComplete(recording.log, packets);
  });
}

// One second's frames at most from one key frame to the next.
function assertKeyFrames(packets, fps) {
  let since = 0;
  packets.forEach(({ key }, i) => {
    since = key ? 0 : since + 1;
    assert.ok(since < fps, `no key frame in the ${fps} frames before frame ${i}`);
  });
}

// What the capture handed over before it stopped is in the file; a frame may still have been on its way.
function assertComplete(log, packets) {
  const [, processed] = log.text.match(/Video Capture stopped,trigger count \d+ , total frames processed: (\d+)/);
  const count = Number(processed);
  assert.ok(packets.length === count || packets.length === count + 1, `${packets.length} frames of ${count}`);
}

test('a source slower than the frame rate gives its own frames, none twice', async (t) => {
  const window = await openPattern(t, { title: 'Slow', x: 20, y: 20, width: 320, height: 192, fps: 5 });
  const settings = [['setWindow', window.handle], ['setFrameRate', 60]]; // prettier-ignore
  const recording = await record({ window, settings, pictures: 8 });
  const { numbers } = assertRecording(recording, { picture: window.picture });
  assert.equal(new Set(numbers).size, numbers.length);
  assert.ok(numbers.length >= 4, `${numbers.length} frames`);
});

test('a still window gives a recording that can be played', async (t) => {
  const window = await openPattern(t, { title: 'Still', x: 20, y: 20, width: 320, height: 192 });
  await window.command('pause');
  const mover = await openPattern(t, { title: 'Clock', x: 500, y: 300, width: 100, height: 100 });
  const recording = await record({ window: mover, settings: [['setWindow', window.handle]] });
  const shown = frames(recording.file);
  assert.ok(shown.length >= 1);
  shown.forEach((frame) => assertPicture(frame, { picture: window.picture }));
});
