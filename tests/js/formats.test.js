'use strict';

// Endpoints that mix in formats which MP3 or AAC does not have, as Bluetooth headsets, studio devices and surround systems do.

const assert = require('node:assert/strict');
const { before, test } = require('node:test');
const { openPattern } = require('./support/desktop');
const { describe, sound } = require('./support/media');
const { recordAll } = require('./support/recording');
const { IN_THE_ROOM, ON_THE_SPEAKER, assertTone, playTone } = require('./support/sound');
const { plugIn } = require('./support/sound-server');

const FRONT = ['front-left', 'front-right'];
const AROUND = [...FRONT, 'front-center', 'lfe', 'rear-left', 'rear-right'];

// Of each endpoint what the file has of it, and what the log says where that is another format.
const ENDPOINTS = [
  {
    ...{ name: 'Headset', rate: 16_000, speakers: ['mono'] },
    mp3: { rate: 16_000, channels: 1 },
    aac: { rate: 48_000, channels: 1, told: /^AAC does not come with 16000 Hz, 1 channels, / },
  },
  {
    ...{ name: 'Studio', rate: 96_000, speakers: FRONT },
    mp3: { rate: 48_000, channels: 2, told: /^Resampling \w+ from 96000 Hz to 48000 Hz, which MP3 has$/ },
    aac: { rate: 48_000, channels: 2, told: /^AAC does not come with 96000 Hz, 2 channels, / },
  },
  {
    ...{ name: 'Disc', rate: 88_200, speakers: FRONT },
    mp3: { rate: 44_100, channels: 2, told: /^Resampling \w+ from 88200 Hz to 44100 Hz, which MP3 has$/ },
    aac: { rate: 44_100, channels: 2, told: /^AAC does not come with 88200 Hz, 2 channels, / },
  },
  {
    ...{ name: 'Surround', rate: 48_000, speakers: AROUND },
    mp3: { rate: 48_000, channels: 2 },
    aac: { rate: 48_000, channels: 6, told: /; encoding with 48000 Hz, 6 channels, 576000 bit\/s$/ },
  },
  {
    ...{ name: 'Cinema', rate: 48_000, speakers: [...AROUND, 'side-left', 'side-right'] },
    mp3: { rate: 48_000, channels: 2 },
    aac: { rate: 48_000, channels: 2, told: /^AAC does not come with 48000 Hz, 8 channels, / },
  },
];

let ids;
before(async () => {
  ids = await plugIn(ENDPOINTS);
});

/** Asserts that a recording has both sounds of an endpoint in this format, and that the log tells of a format that is not its own. */
function assertSounds({ file, log }, codec, { rate, channels, told }, lines) {
  assert.equal(describe(file).sounds.length, 2);
  for (const index of [0, 1]) {
    const heard = sound(file, index);
    assert.deepEqual([heard.codec, heard.rate, heard.channels], [codec, rate, channels]);
    assertTone(heard, ON_THE_SPEAKER, IN_THE_ROOM);
  }
  assert.equal(lines.filter((line) => told?.test(line)).length, told ? 2 : 0, log);
}

ENDPOINTS.forEach(({ name, rate, speakers, mp3, aac }, index) => {
  test(`a device of ${rate} Hz and ${speakers.length} channels is heard in an MP3 and in an AAC stream`, async (t) => {
    const window = await openPattern(t, { title: name, x: 20, y: 20, width: 320, height: 192 });
    await playTone(t, { ...ON_THE_SPEAKER, endpoint: name });
    const { speaker, microphone } = ids[index];
    const settings = [['setWindow', window.handle], ['setFrameRate', 10], ['setSpeakerDevice', speaker], ['setMicrophoneDevice', microphone]];
    const plans = ['libx264', 'mf_h264'].map((encoder) => ({ window, pictures: 150, settings: [...settings, ['setEncoder', encoder]] }));
    const { recordings, log } = await recordAll(plans);
    assert.deepEqual(log.errors, []);
    recordings.forEach(({ started, stopped }) => assert.deepEqual([started, stopped], [true, true]));
    assertSounds(recordings[0], 'mp3', mp3, log.messages('INFO'));
    assertSounds(recordings[1], 'aac', aac, log.messages('INFO'));
  });
});
