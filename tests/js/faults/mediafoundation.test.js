'use strict';

// Recordings with Media Foundation while calls fail, and while one of their streams delivers nothing: a sink writer holds back
// what runs ahead of such a stream.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const { test } = require('node:test');
const { assertRecording } = require('../support/check');
const { ACCESS_DENIED, FAULTS_FILE, failingCalls, letSoundFail } = require('../support/faults');
const { recordUnder, told } = require('../support/faulty-recording');
const { describe, sound } = require('../support/media');
const { scenario } = require('../support/scenario');
const { scratchFolder } = require('../support/scratch');
const { microphone, speaker } = require('../support/sound');

const INVALID_TYPE = '0xc00d36b4';
const NOT_IMPLEMENTED = '0x80004001';
// Of a call that does not say that the stream is gone for good.
const BUFFER_ERROR = '0x88890018';
const SERVICE_NOT_RUNNING = '0x88890010';

// The engine's files are MP4 files by themselves.
const NO_CONTAINER = 'No supported container format found for encoder: mf_h264';

const SPEAKER_SILENT = `speaker:GetNextPacketSize ${BUFFER_ERROR}`;

// Nothing in these files says which colours they have.
const assertPictures = (recording, picture) => assertRecording(recording, { picture, exact: false, space: 'bt709' });

/** Records a window with both sounds while calls fail; the recording after that is whole. */
async function recordBoth(t, given) {
  letSoundFail(t);
  // Few frames, because what an encoder that falls behind has not written by the stop is left out, of both sounds as well.
  const settings = [['setEncoder', 'mf_h264'], ['setFrameRate', 10], microphone(), speaker()];
  const { outcomes, good, picture } = await recordUnder(t, { settings, pictures: 20, ...given });
  assert.deepEqual([good.started, good.stopped, good.errors, good.warnings], [true, true, [], [NO_CONTAINER]]);
  assertPictures(good, picture);
  assert.deepEqual([0, 1].map((index) => sound(good.file, index).codec), ['aac', 'aac']);
  return { outcomes, picture };
}

/** Asserts that a sound goes on until the picture ends, to within what the two threads are apart at the stop. */
function assertGoesOn(file, index) {
  const { video } = describe(file);
  const { seconds } = sound(file, index);
  assert.ok(seconds > Number(video.duration) - 1, `sound ${index} has ${seconds} s, the picture ${video.duration} s`);
}

test('a call that fails once, at whatever moment, costs no more than the attempt', async (t) => {
  const calls = failingCalls('Media Foundation');
  assert.ok(calls.includes('BeginWriting'), `${calls}`);
  const rules = calls.map((call) => `${call} ${ACCESS_DENIED} times 1`);
  const { outcomes } = await recordBoth(t, { rules, moments: ['start', 'middle', 'stop'] });
  for (const outcome of outcomes) {
    const { moment, started, stopped, capturing } = outcome;
    assert.equal(capturing, false, told(outcome));
    assert.equal(stopped, started === true, told(outcome));
    assert.ok(moment === 'start' || started === true, told(outcome));
  }
});

test('a sound that never comes leaves the picture and the other sound whole', async (t) => {
  const { outcomes, picture } = await recordBoth(t, { rules: [SPEAKER_SILENT], moments: ['start'], pictures: 240 });
  const [outcome] = outcomes;
  assert.deepEqual([outcome.started, outcome.stopped, outcome.errors], [true, true, []], told(outcome));
  assertPictures(outcome, picture);
  assertGoesOn(outcome.file, 0);
});

test('a microphone whose service ends leaves the picture and the other sound whole', async (t) => {
  const rules = [`microphone:GetNextPacketSize ${SERVICE_NOT_RUNNING}`];
  const { outcomes, picture } = await recordBoth(t, { rules, moments: ['middle'], pictures: 60, picturesAfter: 180 });
  const [outcome] = outcomes;
  assert.deepEqual([outcome.started, outcome.stopped, outcome.errors], [true, true, []], told(outcome));
  assert.equal(outcome.warnings.length, 2, told(outcome));
  assert.ok(outcome.warnings[1].startsWith(`Microphone device is gone, its sound ends here: HRESULT: ${SERVICE_NOT_RUNNING}`));
  assertPictures(outcome, picture);
  assertGoesOn(outcome.file, 1);
  assert.ok(sound(outcome.file, 0).seconds < sound(outcome.file, 1).seconds - 1, 'the microphone ends earlier');
});

test('a sound that the sink writer refuses leaves the recording without that sound and nothing else', async (t) => {
  // The first stream is the picture's, the next the microphone's.
  const rules = [`SetInputMediaType ${INVALID_TYPE} skip 1 times 1`];
  const { outcomes, picture } = await recordBoth(t, { rules, moments: ['start'], pictures: 90 });
  const [outcome] = outcomes;
  assert.deepEqual([outcome.started, outcome.stopped], [true, true], told(outcome));
  assert.equal(outcome.errors.length, 2, told(outcome));
  assert.ok(outcome.errors[0].startsWith(`Failed to set input media type: `), told(outcome));
  assert.equal(outcome.errors[1], 'Failed to create microphone audio stream');
  assertPictures(outcome, picture);
  assert.equal(describe(outcome.file).streams.length, 2);
  assertGoesOn(outcome.file, 0);
});

test('a sink writer that does not return from a write is ended by stopRecord', async (t) => {
  // Without ticks the picture is held back for good.
  const rules = [`SendStreamTick ${NOT_IMPLEMENTED}\r\n${SPEAKER_SILENT}`];
  const { outcomes } = await recordBoth(t, { rules, moments: ['start'], pictures: 240 });
  const [outcome] = outcomes;
  assert.deepEqual([outcome.started, outcome.stopped], [true, true], told(outcome));
  const count = (begin) => outcome.errors.filter((line) => line.startsWith(begin)).length;
  assert.equal(count(`Failed to send stream tick: `), 1, told(outcome));
  assert.equal(count('The sink writer does not return: '), 1, told(outcome));
});

test('a recording without a sample has no file to complete, which is told once', async (t) => {
  letSoundFail(t);
  fs.writeFileSync(FAULTS_FILE, `GetNextPacketSize ${BUFFER_ERROR}\r\n`);
  t.after(() => fs.rmSync(FAULTS_FILE, { force: true }));
  const { value, log } = await scenario(
    ({ Brisolte, require: load }, { settings }) => {
      const capture = new Brisolte();
      settings.forEach(([method, ...words]) => capture[method](...words));
      const outcome = [capture.startRecord(), capture.stopRecord()];
      load('node:fs').rmSync(capture.getSaveFilePath()); // which nobody has open
      return outcome;
    },
    { settings: [['setOutputDir', scratchFolder()], ['setMode', -1], ['setEncoder', 'mf_h264'], microphone()] },
  );
  assert.deepEqual(value, [true, true]);
  assert.equal(log.errors.length, 1, log.text);
  assert.ok(log.errors[0].startsWith('Failed to finalize sink writer: HRESULT: 0xc00d4a44'), log.text);
});
