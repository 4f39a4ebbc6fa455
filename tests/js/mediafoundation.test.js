'use strict';

// Media Foundation's sink writer is a stand-in here, which takes what the real one takes and writes real files; see
// tests/standins/README.md.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { assertRecording, assertSize } = require('./support/check');
const { openPattern } = require('./support/desktop');
const { ACCESS_DENIED, FAULTS_FILE } = require('./support/faults');
const { describe, sound } = require('./support/media');
const { record, recordSound } = require('./support/recording');
const { scenario } = require('./support/scenario');
const { scratchFolder } = require('./support/scratch');
const { IN_THE_ROOM, ON_THE_SPEAKER, assertTone, microphone, playTone, speaker } = require('./support/sound');

const SIZE = { x: 20, y: 20, width: 320, height: 192 };

const NAMES = { mf_h264: 'h264', mf_hevc: 'hevc' };

/** For the time of a test the stand-ins let a call fail. */
function letFail(t, rule) {
  fs.writeFileSync(FAULTS_FILE, `${rule}\r\n`);
  t.after(() => fs.rmSync(FAULTS_FILE, { force: true }));
}

for (const [name, codec] of Object.entries(NAMES)) {
  test(`${name} records the picture as it is shown`, async (t) => {
    const window = await openPattern(t, { title: name, ...SIZE });
    const settings = [['setWindow', window.handle], ['setEncoder', name]];
    const recording = await record({ window, pictures: 60, settings });
    // Nothing in the file says which colours it has.
    const { video } = assertRecording(recording, { picture: window.picture, exact: false, space: 'bt709' });
    assertSize(video, window.state.client);
    assert.equal(video.codec_name, codec);
    assert.equal(path.extname(recording.file), '.mp4');
    assert.deepEqual(recording.log.errors, []);
  });

  test(`${name} records both sounds beside the picture, each its own`, async (t) => {
    const window = await openPattern(t, { title: name, ...SIZE });
    await playTone(t, IN_THE_ROOM);
    await playTone(t, ON_THE_SPEAKER);
    // Few frames, because what an encoder that falls behind has not written by the stop is left out, of both sounds as well.
    const settings = [['setWindow', window.handle], ['setFrameRate', 10], ['setEncoder', name], microphone(), speaker()];
    const { file, log } = await record({ window, pictures: 150, settings });
    assert.deepEqual(log.errors, []);
    assert.deepEqual([0, 1].map((i) => sound(file, i).codec), ['aac', 'aac']);
    assertTone(sound(file, 0), IN_THE_ROOM, ON_THE_SPEAKER);
    assertTone(sound(file, 1), ON_THE_SPEAKER, IN_THE_ROOM);
    const { video } = describe(file);
    [0, 1].forEach((i) => {
      const { seconds } = sound(file, i);
      assert.ok(Math.abs(seconds - Number(video.duration)) < 1, `sound ${i} has ${seconds} s, the picture ${video.duration}`);
    });
  });
}

test('sound alone becomes an .m4a', async (t) => {
  await playTone(t, ON_THE_SPEAKER);
  const { file, log } = await recordSound({ settings: [['setEncoder', 'mf_h264'], speaker()] });
  assert.equal(path.extname(file), '.m4a');
  assert.equal(describe(file).streams.length, 1);
  assertTone(sound(file), ON_THE_SPEAKER, IN_THE_ROOM);
  assert.deepEqual(log.errors, []);
});

test('a bit rate that AAC does not come with becomes the nearest', async (t) => {
  await playTone(t, ON_THE_SPEAKER);
  const settings = [['setEncoder', 'mf_h264'], ['setAudioBitrate', 320_000], speaker()];
  const { file, log } = await recordSound({ settings });
  assertTone(sound(file), ON_THE_SPEAKER, IN_THE_ROOM);
  assert.ok(log.has('INFO', /^AAC does not come with .*, 320000 bit\/s; encoding with .*, 192000 bit\/s$/), log.text);
});

test('without streams nothing is begun, and start and stop succeed', async () => {
  const { value, log } = await scenario(
    ({ Brisolte }, { dir }) => {
      const capture = new Brisolte();
      capture.setOutputDir(dir);
      capture.setMode(-1);
      capture.setEncoder('mf_h264');
      return [capture.startRecord(), capture.stopRecord()];
    },
    { dir: scratchFolder() },
  );
  assert.deepEqual(value, [true, true], log.text);
  assert.deepEqual(log.errors, []);
});

test('an engine that cannot be initialised fails the start, and the same instance records with libx264', async (t) => {
  letFail(t, `CreateSinkWriter ${ACCESS_DENIED} times 1`);
  const { value } = await scenario(
    ({ Brisolte, log }, { dir }) => {
      const capture = new Brisolte();
      capture.setOutputDir(dir);
      capture.setMode(-1);
      capture.setEncoder('mf_hevc');
      const mark = log.mark();
      const outcome = { started: capture.startRecord(), errors: log.since(mark).errors };
      capture.setEncoder('libx264');
      return { ...outcome, after: [capture.startRecord(), capture.stopRecord()] };
    },
    { dir: scratchFolder() },
  );
  assert.equal(value.started, false);
  assert.match(value.errors[0], /^Failed to create sink writer: HRESULT: 0x80070005/);
  assert.equal(value.errors.at(-1), 'Failed to initialize encoder');
  assert.deepEqual(value.after, [true, true]);
});

test('a sink writer that has failed for good is told of once and left alone', async (t) => {
  const window = await openPattern(t, { title: 'Full disk', ...SIZE });
  letFail(t, 'WriteSample 0x80070070 skip 5');
  const settings = [['setWindow', window.handle], ['setEncoder', 'mf_h264']];
  const { log } = await record({ window, pictures: 90, settings });
  const failed = log.errors.filter((line) => line.startsWith('Failed to write sample: HRESULT: 0x80070070'));
  assert.equal(failed.length, 10, log.text);
  assert.ok(log.has('ERROR', 'The sink writer takes nothing more: what follows is not recorded'));
});
