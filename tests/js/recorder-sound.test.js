'use strict';

// What the sound of a recorder's files is encoded as.

const assert = require('node:assert/strict');
const { once } = require('node:events');
const path = require('node:path');
const { test } = require('node:test');
const { openPattern } = require('./support/desktop');
const media = require('./support/media');
const { packageFolder } = require('./support/package');
const { scratchFolder } = require('./support/scratch');
const { IN_THE_ROOM, ON_THE_SPEAKER, assertTone, playTone } = require('./support/sound');

const { Recorder } = require(path.join(packageFolder, 'recorder.js'));
const BOTH = { microphone: 'default', speaker: 'default' };
// Both endpoints have 44.1 kHz here.

/** Plays a tone in the room and another on the speaker for the time of a test. */
async function playBoth(t) {
  await playTone(t, IN_THE_ROOM);
  await playTone(t, ON_THE_SPEAKER);
}

/** Records a window that moves. @returns the file */
async function recorded(t, name, options) {
  const window = await openPattern(t, { title: 'Heard', x: 30, y: 30, width: 320, height: 192 });
  const recorder = new Recorder({ window: window.handle, file: path.join(scratchFolder(), name), ...BOTH, ...options });
  t.after(() => recorder.close());
  const problems = [];
  recorder.on('log', ({ level, source, text }) => ['warning', 'error'].includes(level) && problems.push(`${source} ${text}`));
  await recorder.start();
  await once(recorder, 'progress');
  await window.paintedMore(120);
  const { file } = await recorder.stop();
  assert.deepEqual(problems, []);
  return file;
}

/** Each sound is its own, has the codec and the rate, and lasts as long as the picture. */
function assertSounds(file, codec, rate) {
  const { streams, packets, sounds } = media.describe(file);
  assert.deepEqual(streams.map(({ codec_type: type }) => type), ['video', 'audio', 'audio']);
  const [first, second] = [0, 1].map((index) => media.sound(file, index));
  assertTone(first, IN_THE_ROOM, ON_THE_SPEAKER);
  assertTone(second, ON_THE_SPEAKER, IN_THE_ROOM);
  const longestPause = packets.slice(1).reduce((most, { ms }, i) => Math.max(most, ms - packets[i].ms), 0);
  const [begin, end] = [packets[0].ms, packets.at(-1).ms];
  [first, second].forEach((sound, i) => {
    assert.deepEqual([sound.codec, sound.rate], [codec, rate]);
    const off = [sounds[i][0] - begin, sounds[i].at(-1) - end, (sound.samples.length / sound.rate) * 1000 - (end - begin)];
    assert.ok(off.every((ms) => Math.abs(ms) <= 150 + longestPause), `sound ${i} is off by ${off} ms at its beginning, its end and in all`);
  });
}

for (const safeFile of [true, false]) {
  test(`sound in an MP4 is AAC, safeFile ${safeFile}`, async (t) => {
    await playBoth(t);
    const file = await recorded(t, 'talk.mp4', { safeFile });
    assertSounds(file, 'aac', 44_100);
    media.assertWhole([file]);
  });
}

test('sound in a MOV is AAC', async (t) => {
  await playBoth(t);
  assertSounds(await recorded(t, 'talk.mov', { encoder: 'prores' }), 'aac', 44_100);
});

test('sound in a WebM is Opus', async (t) => {
  await playBoth(t);
  const file = await recorded(t, 'talk.webm', { encoder: 'libvpx' });
  assertSounds(file, 'opus', 48_000);
  media.assertWhole([file]);
});

test('sound in an MP4 is MP3 or Opus where that is asked for', async (t) => {
  await playBoth(t);
  assertSounds(await recorded(t, 'talk.mp4', { audioCodec: 'mp3' }), 'mp3', 44_100);
  assertSounds(await recorded(t, 'talk.mp4', { audioCodec: 'opus' }), 'opus', 48_000);
});

test('sound has the bit rate that is asked for', async (t) => {
  await playBoth(t);
  const rates = [];
  // Not as much as is asked for: a sine wave needs little.
  for (const audioBitrate of [64_000, undefined, 256_000]) {
    const file = await recorded(t, 'talk.mp4', { audioBitrate, microphone: undefined });
    rates.push(Number(media.describe(file).streams.find(({ codec_type: type }) => type === 'audio').bit_rate));
  }
  assert.ok(rates[0] < rates[1] && rates[1] < rates[2], `${rates} bits per second`);
});
