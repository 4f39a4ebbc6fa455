'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { assertRecording } = require('./support/check');
const { openPattern } = require('./support/desktop');
const { describe, frames } = require('./support/media');
const { assertPicture } = require('./support/pattern');
const { record } = require('./support/recording');
const { microphone } = require('./support/sound');

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

    // The last picture once more, which ends with the recording, may follow at any distance.
    const captured = shownOnce(packets, numbers);
    const gaps = captured.slice(1).map(({ ms }, i) => Math.round(ms - captured[i].ms));
    assert.ok(gaps.every((gap) => gap >= nearest(fps)), `nearer than ${nearest(fps)} ms: ${gaps}`);
    assert.ok(packets.length >= 3, `${packets.length} frames`);

    const [before, after] = recording.painted;
    // The last picture is recorded once more at the stop.
    assert.ok(packets.length <= after - before + 3, 'more frames than the source painted');
    assertNoneTwice(numbers);
    assertKeyFrames(packets, fps);
    assertLasted(recording, fps);
    assertComplete(recording.log, packets);
  });
}

// All packets but that of the last picture when it is the one before once more.
const shownOnce = (packets, numbers) => (numbers.at(-1) === numbers.at(-2) ? packets.slice(0, -1) : packets);

// Only the last picture is shown again, until the stop.
function assertNoneTwice(numbers) {
  const others = numbers.slice(0, -1);
  assert.equal(new Set(others).size, others.length, 'no picture is recorded twice');
}

// The file is as long as the recording, to within one frame; the stop is somewhere in the call of stopRecord. Sound comes
// in whole packets, of 1152 samples at 44.1 kHz, and may end up to one later.
function assertLasted({ file, lasted: [called, returned] }, fps, { sound = false } = {}) {
  const { format, video } = describe(file);
  const [frame, packet] = [1000 / fps, sound ? 1152 / 44.1 : 0];
  const assertNear = (seconds, tolerance) => {
    const off = `${1000 * seconds} ms of ${called} to ${returned} ms`;
    assert.ok(1000 * seconds >= called - frame && 1000 * seconds <= returned + tolerance, off);
  };
  assertNear(format.duration, frame + packet);
  if (video.duration) {
    assertNear(video.duration, frame);
  }
}

// One second's frames at most from one key frame to the next.
function assertKeyFrames(packets, fps) {
  let since = 0;
  packets.forEach(({ key }, i) => {
    since = key ? 0 : since + 1;
    assert.ok(since < fps, `no key frame in the ${fps} frames before frame ${i}`);
  });
}

// What the capture handed over before it stopped is in the file, and the last picture once more where it was not shown until the stop.
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
  assertNoneTwice(numbers);
  assert.ok(numbers.length >= 4, `${numbers.length} frames`);
});

// `space` are the colours of a file that does not say which it has.
for (const { name, encoder, fps, sound, space } of [
  { name: 'an MP4', encoder: 'libx264', fps: 30 },
  { name: 'an MP4 with sound', encoder: 'libx264', fps: 30, sound: true },
  { name: 'a MOV with sound', encoder: 'prores_ks', fps: 30, sound: true },
  { name: 'a WebM', encoder: 'libvpx', fps: 30 },
  { name: 'an AVI', encoder: 'mjpeg', fps: 30 },
  { name: 'an AVI with sound', encoder: 'mjpeg', fps: 30, sound: true },
  { name: "an MP4 of Media Foundation's", encoder: 'mf_h264', fps: 30, space: 'bt709' },
  { name: "an MP4 of Media Foundation's with sound", encoder: 'mf_h264', fps: 30, sound: true, space: 'bt709' },
  { name: "an MP4 of Media Foundation's with HEVC and sound", encoder: 'mf_hevc', fps: 30, sound: true, space: 'bt709' },
]) {
  test(`${name} of a still window lasts as long as it was recorded`, async (t) => {
    const window = await openPattern(t, { title: 'Still', x: 20, y: 20, width: 320, height: 192 });
    await window.command('pause');
    const mover = await openPattern(t, { title: 'Clock', x: 500, y: 300, width: 100, height: 100 });
    const settings = [['setWindow', window.handle], ['setEncoder', encoder], ['setFrameRate', fps], ...(sound ? [microphone()] : [])]; // prettier-ignore
    const recording = await record({ window: mover, settings });
    assertLasted(recording, fps, { sound });
    const { video } = describe(recording.file);
    const shown = frames(recording.file, { ...video, color_space: space ?? video.color_space });
    assert.ok(shown.length >= 2, `${shown.length} frames`);
    shown.forEach((frame) => assertPicture(frame, { picture: window.picture, exact: false, tolerance: 20 }));
  });
}
