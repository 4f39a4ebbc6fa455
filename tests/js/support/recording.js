'use strict';

const assert = require('node:assert/strict');
const { scenario } = require('./scenario');
const { scratchFolder } = require('./scratch');

/**
 * Makes recordings one after the other in one child process and instance.
 *
 * @param {object[]} plans of each recording:
 *   settings: [[method, ...arguments], ...], each of which must return true;
 *   window: the pattern window that tells how long to record;
 *   pictures: for so many pictures of it (90)
 * @returns {Promise<{recordings: object[], log: Log}>} of each recording: started, file, painted (the window's count at
 *   the start and at the end), capturing, stopped, and lasted: the milliseconds from the first frame to the call of stopRecord
 *   and to its return
 */
async function recordAll(plans, options) {
  const given = plans.map(({ settings = [], window, pictures = 90, dir = scratchFolder() }) => ({
    settings: [['setOutputDir', dir], ...settings],
    progress: window.progress,
    pictures,
  }));
  const { value, log } = await scenario(makeRecordings, given, options);
  return { recordings: value, log };
}

async function makeRecordings({ Brisolte, log, painted, paintedMore }, plans) {
  const capture = new Brisolte();
  const recordings = [];
  // Captures are stamped by the same clock.
  const now = () => Number(process.hrtime.bigint() / 1000000n);
  for (const { settings, progress, pictures } of plans) {
    for (const [method, ...words] of settings) {
      if (capture[method](...words) !== true) {
        throw new Error(`${method}(${words}) was refused`);
      }
    }
    const mark = log.mark();
    const before = painted(progress);
    const started = capture.startRecord();
    const recording = { started, file: capture.getSaveFilePath(), capturing: capture.isCapturing() };
    if (started) {
      await log.line('First Video frame arrived at: ', mark);
      await paintedMore(progress, pictures);
      const called = now();
      recording.stopped = capture.stopRecord();
      const returned = now();
      const [, first] = log.since(mark).text.match(/First Video frame arrived at: (\d+)/);
      recording.lasted = [called - first, returned - first];
    }
    recordings.push({ ...recording, painted: [before, painted(progress)], log: log.since(mark).text });
  }
  return recordings;
}

/** One recording that must succeed. */
async function record(plan, options) {
  const { recordings, log } = await recordAll([plan], options);
  const [recording] = recordings;
  assert.deepEqual(
    { started: recording.started, capturing: recording.capturing, stopped: recording.stopped },
    { started: true, capturing: true, stopped: true },
    log.text,
  );
  return { ...recording, log };
}

/** One recording without video that must succeed, of so many seconds. */
async function recordSound({ settings, seconds = 4, dir = scratchFolder() }) {
  const given = { settings: [['setOutputDir', dir], ['setMode', -1], ...settings], seconds };
  const { value, log } = await scenario(makeSoundRecording, given);
  assert.deepEqual([value.started, value.stopped], [true, true], log.text);
  return { ...value, log };
}

async function makeSoundRecording({ Brisolte, require: load }, { settings, seconds }) {
  const { setTimeout: delay } = load('node:timers/promises');
  const capture = new Brisolte();
  for (const [method, ...words] of settings) {
    if (capture[method](...words) !== true) {
      throw new Error(`${method}(${words}) was refused`);
    }
  }
  const started = capture.startRecord();
  if (started) {
    await delay(seconds * 1000);
  }
  return { started, stopped: capture.stopRecord(), file: capture.getSaveFilePath() };
}

module.exports = { record, recordAll, recordSound };
