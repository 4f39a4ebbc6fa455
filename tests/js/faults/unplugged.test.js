'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const { test } = require('node:test');
const { openPattern } = require('../support/desktop');
const { describe, sound } = require('../support/media');
const { recordAll } = require('../support/recording');
const { scratchFolder } = require('../support/scratch');
const { microphone, speaker } = require('../support/sound');
const { unplugMicrophone } = require('../support/sound-server');
const { waitFor } = require('../support/wait');

test('a microphone that is unplugged ends its own sound alone', async (t) => {
  const window = await openPattern(t, { title: 'Unplugged', x: 20, y: 20, width: 320, height: 192 });
  const dir = scratchFolder();
  const settings = [
    ['setWindow', window.handle],
    microphone(),
    speaker(),
  ];
  const recording = recordAll([
    { window, settings, dir, pictures: 300 },
    { window, settings: [['setMicrophoneDevice', '']], pictures: 60 },
  ]);
  await waitFor('the recording to begin', () => fs.readdirSync(dir).length > 0);
  await window.paintedMore(90);
  unplugMicrophone();
  const { recordings } = await recording;

  recordings.forEach(({ started, stopped }) => assert.deepEqual([started, stopped], [true, true]));
  const [first, second] = recordings.map(({ file }) => file);
  const length = Number(describe(first).video.duration);
  assert.ok(Math.abs(sound(first, 1).seconds - length) <= 0.1, 'the speaker goes on');
  assert.ok(sound(first, 0).seconds > 0.5, 'what the microphone heard before is there');
  assert.ok(sound(first, 0).seconds < length - 1, 'and ends there');
  assert.ok(sound(second, 0).seconds > 0.5, 'the next recording has its sound');
});
