'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { assertRecording, assertRising } = require('../support/check');
const { jumpIn, setClock, stopClock } = require('../support/clock');
const { openPattern } = require('../support/desktop');
const { describe } = require('../support/media');
const { recordAll } = require('../support/recording');
const { scenario } = require('../support/scenario');
const { scratchFolder } = require('../support/scratch');
const { microphone, speaker } = require('../support/sound');

const HOUR = 3600;
const SMALL = { x: 30, y: 30, width: 320, height: 192 };

// Records with the clock set in the middle, then once more. `lasted` are the milliseconds that a recording ran at least and
// at most, by a clock that cannot be set.
async function recordAcross({ Brisolte, log, painted, paintedMore, waitFor, require: load, supportFolder }, given) {
  const clock = load(`${supportFolder}\\clock`);
  const capture = new Brisolte();
  for (const [method, ...words] of given.settings) {
    capture[method](...words);
  }
  const record = async (inTheMiddle) => {
    const mark = log.mark();
    const before = painted(given.progress);
    const called = performance.now();
    const started = capture.startRecord();
    await log.line('First Video frame arrived at: ', mark);
    const running = performance.now();
    await paintedMore(given.progress, 90);
    await inTheMiddle(mark);
    await paintedMore(given.progress, 90);
    const least = performance.now() - running;
    const stopped = capture.stopRecord();
    const lasted = [least, performance.now() - called];
    return { started, stopped, lasted, file: capture.getSaveFilePath(), painted: [before, painted(given.progress)] };
  };
  const setClock = (mark) => {
    clock.setClock(given.seconds);
    return waitFor('the log to have the new time', () => {
      capture.getSpeakers(); // which is logged
      return Math.abs(clock.jumpIn(log.since(mark)) - given.seconds) < 60;
    });
  };
  return [await record(setClock), await record(() => {})];
}

// What comes first and last may be on its way when the recording begins and ends.
const assertLasts = (length, [least, most]) =>
  assert.ok(length > least - 1000 && length <= most, `${length} ms of a recording of ${least} to ${most} ms`);

for (const { direction, seconds } of [
  { direction: 'back', seconds: -HOUR },
  { direction: 'forward', seconds: HOUR },
]) {
  test(`a clock that is set ${direction} by an hour leaves the recording as it is`, async (t) => {
    t.after(() => setClock(0));
    const window = await openPattern(t, { title: 'Clock', ...SMALL });
    const settings = [['setOutputDir', scratchFolder()], ['setWindow', window.handle], microphone(), speaker()];
    const { value, log } = await scenario(recordAcross, { settings, seconds, progress: window.progress });

    const jump = jumpIn(log);
    assert.ok(Math.abs(jump - seconds) < 60, `the log's clock jumps by ${jump} s`);
    assert.deepEqual(log.errors, []);
    for (const recording of value) {
      assert.deepEqual([recording.started, recording.stopped], [true, true]);
      const { packets } = assertRecording(recording, { picture: window.picture });
      const { sounds } = describe(recording.file);
      assert.equal(sounds.length, 2);
      for (const times of [packets.map(({ ms }) => ms), ...sounds]) {
        assertRising(times);
        assertLasts(times.at(-1) - times[0], recording.lasted);
      }
    }
  });
}

test('a recording of a second that comes again takes the place of the first', async (t) => {
  t.after(() => setClock(0));
  const window = await openPattern(t, { title: 'Again', ...SMALL });
  const dir = scratchFolder();
  const plan = { window, dir, pictures: 30, settings: [['setWindow', window.handle]] };
  stopClock('2026-01-31 23:59:59');
  const { recordings } = await recordAll([plan, plan]);

  recordings.forEach(({ started, stopped }) => assert.deepEqual([started, stopped], [true, true]));
  const name = 'Qorvex-2026-01-31-23-59-59.mp4';
  assert.deepEqual(recordings.map(({ file }) => file), [path.join(dir, name), path.join(dir, name)]);
  assert.deepEqual(fs.readdirSync(dir), [name]);
  assertRecording(recordings[1], { picture: window.picture });
});
