'use strict';

// Recordings with a pause, on the module that ships.

const assert = require('node:assert/strict');
const { once } = require('node:events');
const path = require('node:path');
const { test } = require('node:test');
const { openPattern } = require('./support/desktop');
const media = require('./support/media');
const { packageFolder } = require('./support/package');
const { NUMBERS, readNumber } = require('./support/pattern');
const { scratchFolder } = require('./support/scratch');
const { LEVEL, openTone, pieces, playTone, strengthAt } = require('./support/sound');

const { Recorder } = require(path.join(packageFolder, 'recorder.js'));

const SMALL = { x: 30, y: 30, width: 320, height: 192 };
const HEARD = { endpoint: 'Speaker', frequency: 1000 };
const NOT_HEARD = { endpoint: 'Speaker', frequency: 3500, level: LEVEL };

/** Each picture as { number, ms }. */
function picturesOf(file, window) {
  const times = media.describe(file).packets.map(({ ms }) => ms).sort((a, b) => a - b);
  return media.frames(file).map((frame, i) => ({ number: readNumber(frame, window), ms: times[i] }));
}

/** From each picture to the next: how many the window has painted, and how much later it is. */
const stepsOf = (pictures) =>
  pictures.slice(1).map(({ number, ms }, i) => ({ painted: (number - pictures[i].number + NUMBERS) % NUMBERS, ms: ms - pictures[i].ms }));

async function recordWithPause(t, options) {
  await playTone(t, HEARD);
  const strange = await openTone(t, NOT_HEARD);
  const window = await openPattern(t, { title: 'Paused', ...SMALL });
  const recorder = new Recorder({ window: window.handle, speaker: 'default', directory: scratchFolder(), ...options });
  t.after(() => recorder.close());
  await recorder.start();
  await once(recorder, 'progress');
  await window.paintedMore(60);
  await recorder.pause();
  await strange.play(300);
  await window.paintedMore(150);
  await strange.close();
  // What it played last is on its way through the sound server.
  await window.paintedMore(60);
  await recorder.resume();
  await window.paintedMore(60);
  return { window, result: await recorder.stop() };
}

for (const encoder of ['libx264', 'mf_h264', 'libvpx', 'mjpeg']) {
  test(`${encoder}: what happens in a pause is left out, and what comes after it follows at once`, async (t) => {
    const { window, result } = await recordWithPause(t, { encoder, ...(encoder === 'libvpx' && { speaker: undefined }) });
    media.assertWhole([result.file]);
    const { format, sounds } = media.describe(result.file);
    assert.ok(Math.abs(Number(format.duration) - result.seconds) < 0.5, `${format.duration} s of ${result.seconds}`);
    const steps = stepsOf(picturesOf(result.file, window));
    const [joint, next] = [...steps].sort((a, b) => b.painted - a.painted);
    assert.ok(joint.painted >= 200, `${joint.painted} pictures are missing where the pause was`);
    assert.ok(next.painted < 200, `and ${next.painted} elsewhere`);
    const longest = Math.max(...steps.filter((step) => step !== joint).map(({ ms }) => ms));
    assert.ok(joint.ms <= longest + 35, `after the pause the next picture comes ${joint.ms} ms later, elsewhere ${longest} ms`);
    sounds.forEach((_, i) => assertNotHeard(media.sound(result.file, i)));
  });
}

function assertNotHeard({ samples, rate }) {
  const parts = pieces(samples, rate / 20);
  const heard = parts.filter((part) => strengthAt(NOT_HEARD.frequency, part, rate) > LEVEL / 4);
  // The edge of a hole in a tone has something of every frequency.
  assert.ok(heard.length <= 2, `${heard.length} of ${parts.length} pieces have what was played in the pause`);
}

test('what has changed in a pause is shown after it, also when nothing changes any more', async (t) => {
  const window = await openPattern(t, { title: 'Still', ...SMALL });
  const recorder = new Recorder({ window: window.handle, directory: scratchFolder() });
  t.after(() => recorder.close());
  await recorder.start();
  await once(recorder, 'progress');
  await recorder.pause();
  await window.paintedMore(60);
  await window.command('pause');
  await once(recorder, 'progress');
  await recorder.resume();
  await once(recorder, 'progress');
  const { file } = await recorder.stop();
  const last = picturesOf(file, window).at(-1).number;
  const missing = (window.painted - last + NUMBERS) % NUMBERS;
  assert.ok(missing <= 1, `the last picture is ${missing} before the one that the window shows`);
});
