'use strict';

// How loud a recorder records, on the module that ships.

const assert = require('node:assert/strict');
const { once } = require('node:events');
const path = require('node:path');
const { test } = require('node:test');
const { openPattern } = require('./support/desktop');
const media = require('./support/media');
const { packageFolder } = require('./support/package');
const { scratchFolder } = require('./support/scratch');
const { LEVEL, pieces, playTone, strengthAt } = require('./support/sound');

const { Recorder } = require(path.join(packageFolder, 'recorder.js'));

const HEARD = { endpoint: 'Speaker', frequency: 1000, level: LEVEL };

/** Waits for a progress whose level of the speaker is near this, and a second longer. */
async function heardAt(recorder, level) {
  for (let seconds = 0; seconds < 20; seconds += 1) {
    const [{ levels }] = await once(recorder, 'progress');
    if (Math.abs(levels.speaker - level) < 0.02) {
      await once(recorder, 'progress');
      return;
    }
  }
  assert.fail(`the speaker never got to the level ${level}`);
}

for (const encoder of ['libx264', 'mf_h264']) {
  test(`${encoder}: a sound is recorded as loud as it was asked for, is muted and comes back`, async (t) => {
    await playTone(t, HEARD);
    const window = await openPattern(t, { title: 'Loud', width: 320, height: 192 });
    const speaker = { id: 'default', volume: 0.5 };
    const recorder = new Recorder({ window: window.handle, speaker, encoder, directory: scratchFolder() });
    t.after(() => recorder.close());
    await recorder.start();
    await heardAt(recorder, LEVEL / 2);
    await recorder.mute('speaker');
    await heardAt(recorder, 0);
    await recorder.unmute('speaker');
    await recorder.setVolume('speaker', 1);
    await heardAt(recorder, LEVEL);
    const { file } = await recorder.stop();
    assertCourse(media.sound(file), [LEVEL / 2, 0, LEVEL]);
  });
}

// An encoder may change a tone by a tenth.
const isAt = (strength, level) => Math.abs(strength - level) < LEVEL / 10;

/** Asserts that a tone is first at one of these levels, then at the next, for half a second at least. */
function assertCourse({ samples, rate }, levels) {
  const strengths = pieces(samples, rate / 20).map((part) => strengthAt(HEARD.frequency, part, rate));
  const begins = levels.map((level) => {
    assert.ok(strengths.filter((strength) => isAt(strength, level)).length >= 10, `hardly at the level ${level}: ${strengths}`);
    return strengths.findIndex((strength, i) => isAt(strength, level) && isAt(strengths[i + 1], level));
  });
  assert.deepEqual(begins, [...begins].sort((a, b) => a - b), `not one after the other: ${strengths}`);
}
