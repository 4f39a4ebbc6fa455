'use strict';

// What every recording of the known picture must satisfy.

const assert = require('node:assert/strict');
const { describe, frames } = require('./media');
const { assertAdvances, assertPicture, assertRulersToThePixel, readNumber, NUMBERS } = require('./pattern');

const even = (length) => length + (length % 2);

/** The stream's size is this, rounded up to even. */
function assertSize(video, { width, height }) {
  assert.deepEqual([video.width, video.height], [even(width), even(height)]);
}

/** Time stamps begin at 0 and strictly rise. */
function assertTimes(found) {
  assert.ok(found.length > 0, 'no packets');
  assert.equal(found[0].ms, 0);
  assert.equal(found[0].key, true);
  assertRising(found.map(({ ms }) => ms));
}

/** Each of these times is later than the one before it. */
function assertRising(times) {
  times.slice(1).forEach((ms, i) => assert.ok(ms > times[i], `packet ${i + 1} at ${ms} after ${times[i]}`));
}

/**
 * The whole file shows the picture, moving, each frame one picture.
 *
 * @param {{file: string, painted: number[]}} recording
 * @param {object} place as assertPicture takes it; `exact: false` leaves the edges to the encoder, and `space` are the
 *   colours of a file that does not say which it has
 * @returns {{video: object, packets: object[], numbers: number[], frames: object[]}}
 */
function assertRecording(recording, place) {
  const { video, packets } = describe(recording.file);
  assertTimes(packets);
  const shown = frames(recording.file, place.space ? { ...video, color_space: place.space } : video);
  assert.equal(shown.length, packets.length, 'every packet is a frame');
  const numbers = shown.map((frame) => readNumber(frame, place));
  assertAdvances(numbers);
  assertFresh(numbers, recording.painted);
  for (const frame of shown.filter((_, i) => i % 20 === 0)) {
    assertPicture(frame, place);
    if (place.exact !== false) {
      assertRulersToThePixel(frame, place);
    }
  }
  return { video, packets, numbers, frames: shown };
}

// Frames show pictures of the time of the recording: one may have been on the screen when it began.
function assertFresh(numbers, [before, after]) {
  const since = (number) => (number - before + 2 + NUMBERS) % NUMBERS;
  const most = since(after + 1);
  numbers.forEach((number) =>
    assert.ok(since(number) <= most, `picture ${number} is not from the recording, ${before} to ${after}`),
  );
}

module.exports = { assertRecording, assertRising, assertSize, assertTimes, even };
