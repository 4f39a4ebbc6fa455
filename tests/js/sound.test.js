'use strict';

// The endpoints are a speaker, and a microphone that hears a room with a loudspeaker in it.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { openPattern } = require('./support/desktop');
const { describe, sound } = require('./support/media');
const { record, recordSound } = require('./support/recording');
const { scenario } = require('./support/scenario');
const { scratchFolder } = require('./support/scratch');
const {
  IN_THE_ROOM,
  LEVEL,
  ON_THE_SPEAKER,
  assertTone,
  microphone,
  openTone,
  pieces,
  playTone,
  speaker,
  strengthAt,
} = require('./support/sound');
const { waitFor } = require('./support/wait');

const SMALL = { x: 20, y: 20, width: 320, height: 192 };

/** Asserts that a file's sounds are as long as its picture, and that as much was delivered. */
function assertLengths(file, count) {
  const { video, streams, packets } = describe(file);
  // The picture ends with its last frame, the sound when the recording is stopped, which on a busy machine is later.
  const longestPause = packets.slice(1).reduce((most, { ms }, i) => Math.max(most, ms - packets[i].ms), 0) / 1000;
  const tolerance = 0.1 + longestPause;
  assert.equal(streams.filter(({ codec_type: type }) => type === 'audio').length, count);
  for (let i = 0; i < count; i += 1) {
    const { seconds, samples, rate } = sound(file, i);
    const length = Number(video.duration);
    assert.ok(Math.abs(seconds - length) <= tolerance, `sound ${i} lasts ${seconds} s, the picture ${length} s`);
    assert.ok(Math.abs(samples.length / rate - length) <= tolerance, `sound ${i} has ${samples.length / rate} s of samples`);
  }
}

test('a screen is recorded with both sounds, each its own', async (t) => {
  const window = await openPattern(t, { title: 'Heard', ...SMALL });
  await playTone(t, IN_THE_ROOM);
  await playTone(t, ON_THE_SPEAKER);
  const { file } = await record({ window, settings: [['setMode', 0], microphone(), speaker()], pictures: 180 });
  assert.equal(path.extname(file), '.mp4');
  assertLengths(file, 2);
  const [first, second] = [sound(file, 0), sound(file, 1)];
  assertTone(first, IN_THE_ROOM, ON_THE_SPEAKER);
  assertTone(second, ON_THE_SPEAKER, IN_THE_ROOM);
  [first, second].forEach(({ codec }) => assert.equal(codec, 'mp3'));
});

test('a microphone alone is recorded to an MP3 file', async (t) => {
  await playTone(t, IN_THE_ROOM);
  await playTone(t, ON_THE_SPEAKER);
  const { file, log } = await recordSound({ settings: [microphone()] });
  assert.equal(path.extname(file), '.mp3');
  const heard = sound(file);
  assertTone(heard, IN_THE_ROOM, ON_THE_SPEAKER);
  assert.equal(describe(file).streams.length, 1);
  assert.deepEqual(log.errors, []);
  // 128 kbit/s
  assert.ok(heard.samples.length / heard.rate >= 4, `${heard.samples.length} samples`);
});

test('a speaker that plays nothing gives silence without gaps', async (t) => {
  const window = await openPattern(t, { title: 'Quiet', ...SMALL });
  const settings = [['setWindow', window.handle], speaker()];
  const { file, log } = await record({ window, settings, pictures: 150 });
  assertLengths(file, 1);
  const loudest = sound(file).samples.reduce((most, sample) => Math.max(most, Math.abs(sample)), 0);
  assert.ok(loudest < 0.001, `a sample of ${loudest}`);
  assert.deepEqual(log.errors, []);
});

test('a tone that starts and stops does so in the file', async (t) => {
  const tone = await openTone(t, ON_THE_SPEAKER);
  const window = await openPattern(t, { title: 'Tone', ...SMALL });
  const dir = scratchFolder();
  const settings = [['setWindow', window.handle], speaker()];
  const recording = record({ window, settings, dir, pictures: 300 });
  await waitFor('the recording to begin', () => fs.readdirSync(dir).length > 0);
  await window.paintedMore(60);
  await tone.play(1.5);
  const { file } = await recording;
  assertLengths(file, 1);
  const { samples, rate } = sound(file);
  const loud = pieces(samples, rate / 50).map(
    (piece) => strengthAt(ON_THE_SPEAKER.frequency, piece, rate) > LEVEL / 2,
  );
  const [first, last] = [loud.indexOf(true), loud.lastIndexOf(true)];
  assert.ok(first > 0 && last < loud.length - 1, 'silence before and after the tone');
  const heard = loud.filter(Boolean).length / 50;
  assert.ok(Math.abs(heard - 1.5) <= 0.1, `${heard} s of the tone are heard`);
});

test('sound goes into an AVI file as well', async (t) => {
  await playTone(t, ON_THE_SPEAKER);
  const window = await openPattern(t, { title: 'Motion JPEG', ...SMALL });
  const settings = [['setWindow', window.handle], ['setEncoder', 'mjpeg'], speaker()];
  const { file } = await record({ window, settings });
  assert.equal(path.extname(file), '.avi');
  assertLengths(file, 1);
  assertTone(sound(file), ON_THE_SPEAKER, IN_THE_ROOM);
});

test('two instances record the same sound at once', async (t) => {
  await playTone(t, ON_THE_SPEAKER);
  await playTone(t, IN_THE_ROOM);
  const recordings = await Promise.all([speaker(), microphone()].map((device) => recordSound({ settings: [device] })));
  assertTone(sound(recordings[0].file), ON_THE_SPEAKER, IN_THE_ROOM);
  assertTone(sound(recordings[1].file), IN_THE_ROOM, ON_THE_SPEAKER);
});

test('what a container cannot hold is said, and the next recording works', async (t) => {
  const window = await openPattern(t, { title: 'Next', ...SMALL });
  const attempts = [
    {
      settings: [['setMode', 0], ['setEncoder', 'libvpx'], microphone(), ['setSpeakerDevice', '']],
      reason: /A webm file cannot hold mp3 sound; record without sound or choose another video encoder/,
    },
    {
      settings: [['setMode', -1], microphone(), speaker()],
      reason: /An mp3 file holds one sound, not 2; record either the microphone or the speaker/,
    },
  ];
  const { value } = await scenario(
    async ({ Brisolte, log, paintedMore }, { dir, progress, plans }) => {
      const capture = new Brisolte();
      capture.setOutputDir(dir);
      const outcomes = [];
      for (const settings of plans) {
        settings.forEach(([method, ...words]) => capture[method](...words));
        const mark = log.mark();
        capture.startRecord();
        await paintedMore(progress, 30);
        capture.stopRecord();
        outcomes.push({ errors: log.since(mark).errors, capturing: capture.isCapturing() });
      }
      return outcomes;
    },
    {
      dir: scratchFolder(),
      progress: window.progress,
      plans: [...attempts.map(({ settings }) => settings), [['setMode', 0], ['setEncoder', 'libx264'], microphone()]],
    },
  );
  attempts.forEach(({ reason }, i) => {
    assert.ok(value[i].errors.some((line) => reason.test(line)), value[i].errors.join('\n'));
    assert.ok(value[i].errors.some((line) => /^FFmpegEncoder: Failed to write file header: /.test(line)));
  });
  assert.deepEqual(value.at(-1).errors, []);
  assert.ok(value.every(({ capturing }) => !capturing));
});

test('one device that is not there leaves the other', async (t) => {
  await playTone(t, ON_THE_SPEAKER);
  const window = await openPattern(t, { title: 'One of two', ...SMALL });
  const settings = [['setWindow', window.handle], ['setMicrophoneDevice', 'unplugged'], speaker()];
  const { file, log } = await record({ window, settings });
  assertLengths(file, 1);
  assertTone(sound(file), ON_THE_SPEAKER, IN_THE_ROOM);
  assert.ok(log.has('ERROR', /^Failed to get microphone device by ID: HRESULT: 0x[0-9a-f]+/), log.text);
  assert.ok(log.has('ERROR', 'Failed to initialize microphone'));
});

test('without a device that is there a recording does not start, and the next one does', async () => {
  const { value } = await scenario(
    ({ Brisolte, log }, { dir }) => {
      const capture = new Brisolte();
      capture.setOutputDir(dir);
      capture.setMode(-1);
      return ['setMicrophoneDevice', 'setSpeakerDevice'].map((method) => {
        capture[method]('unplugged');
        const mark = log.mark();
        const outcome = [capture.startRecord(), capture.isCapturing()];
        const { errors } = log.since(mark);
        capture[method]('');
        return { outcome, errors, next: [capture.startRecord(), capture.stopRecord()] };
      });
    },
    { dir: scratchFolder() },
  );
  value.forEach(({ outcome, errors, next }) => {
    assert.deepEqual(outcome, [false, false]);
    assert.deepEqual(errors.slice(-3), [
      'Failed to initialize both microphone and speaker streams',
      'AudioCapture: Failed to initialize audio',
      'Failed to create video capture',
    ]);
    assert.deepEqual(next, [true, true]);
  });
});
