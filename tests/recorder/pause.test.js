'use strict';

// Recordings that are paused.

const assert = require('node:assert/strict');
const { once } = require('node:events');
const { setTimeout: delay } = require('node:timers/promises');
const { test } = require('node:test');
const { waitFor } = require('../js/support/wait');
const { recorderOf } = require('./support/recorder');

const nothingRecorded = { name: 'RecorderError', code: 'ERR_RECORDER_STATE', message: 'Nothing is recorded. Call start first.' };

test('a recording is paused and goes on, and its time without the pauses', async (t) => {
  const { recorder, events, named } = recorderOf(t, {});
  await recorder.start();
  await once(recorder, 'progress');
  await recorder.pause();
  assert.deepEqual([recorder.paused, recorder.recording], [true, true]);
  await once(recorder, 'progress');
  const [one] = await once(recorder, 'progress');
  const [other] = await once(recorder, 'progress');
  assert.deepEqual({ ...other, freeBytes: 0 }, { ...one, freeBytes: 0 }, 'nothing is recorded in a pause');
  assert.equal(one.paused, true);
  await recorder.resume();
  assert.equal(recorder.paused, false);
  const [later] = await once(recorder, 'progress');
  assert.equal(later.paused, false);
  assert.ok(later.seconds > one.seconds && later.bytes > one.bytes);
  const { seconds } = await recorder.stop();
  const [paused] = named('pause');
  assert.deepEqual(named('pause'), [{ file: one.file, seconds: one.seconds }]);
  assert.equal(named('resume')[0].seconds, paused.seconds);
  assert.ok(seconds >= later.seconds);
  const order = events.map(([name]) => name).filter((name) => name !== 'log' && name !== 'progress');
  assert.deepEqual(order, ['start', 'pause', 'resume', 'stop']);
});

test('what it is already it is not told again', async (t) => {
  const { recorder, named } = recorderOf(t, {});
  await recorder.start();
  await recorder.resume();
  await Promise.all([recorder.pause(), recorder.pause()]);
  await recorder.pause();
  await Promise.all([recorder.resume(), recorder.resume()]);
  assert.deepEqual([named('pause').length, named('resume').length], [1, 1]);
});

test('a paused recording is stopped', async (t) => {
  const { recorder, named } = recorderOf(t, {});
  await recorder.start();
  await recorder.pause();
  const [{ seconds }] = named('pause');
  const result = await recorder.stop();
  assert.deepEqual([result.reason, result.seconds, recorder.paused], ['requested', seconds, false]);
  await recorder.start();
  assert.equal(recorder.paused, false, 'the next recording is not paused');
});

test('limits and segments count what is recorded', async (t) => {
  const { recorder, named } = recorderOf(t, { stopAfter: { seconds: 2.4 }, segments: { seconds: 1 } });
  const stopped = once(recorder, 'stop');
  await recorder.start();
  await recorder.pause();
  await waitFor('three seconds of the pause', () => named('progress').length >= 3);
  assert.deepEqual([named('segment').length, recorder.recording], [0, true]);
  await recorder.resume();
  const [{ reason, seconds, files }] = await stopped;
  assert.equal(reason, 'seconds');
  assert.ok(seconds >= 2.4 && files.length >= 2, `${seconds} s, ${files.length} files`);
});

test('pausing what is not recorded is refused', async (t) => {
  const { recorder } = recorderOf(t, {});
  await assert.rejects(recorder.pause(), nothingRecorded);
  await assert.rejects(recorder.resume(), nothingRecorded);
  await recorder.start();
  const stopped = recorder.stop();
  await assert.rejects(recorder.pause(), nothingRecorded);
  await stopped;
  await assert.rejects(recorder.resume(), nothingRecorded);
});

test('a pause that meets the end of the recording is refused', async (t) => {
  const { recorder } = recorderOf(t, { stopAfter: { seconds: 0.5 } });
  const stopped = once(recorder, 'stop');
  await recorder.start();
  let refused;
  while (!refused) {
    await Promise.all([recorder.pause(), recorder.resume()]).catch((error) => (refused = error));
    await delay(1);
  }
  assert.equal(refused.code, 'ERR_RECORDER_STATE');
  await stopped;
});

test('a process that ends in a pause is told of', async (t) => {
  const { recorder } = recorderOf(t, { encoder: 'diesLater' });
  await recorder.start();
  const failed = once(recorder, 'error');
  await recorder.pause();
  const [error] = await failed;
  assert.equal(error.code, 'ERR_RECORDER_LOST');
  assert.equal(recorder.paused, false);
});
