'use strict';

// Recordings during which calls of the system fail.

const { openPattern } = require('./desktop');
const { FAULTS_FILE } = require('./faults');
const { scenario } = require('./scenario');
const { scratchFolder } = require('./scratch');

const SMALL = { x: 20, y: 20, width: 320, height: 192 };

/**
 * Records a window once for each rule and moment, one recording after the other in one child process and instance, and
 * then once more without a fault.
 *
 * @param {object} given
 * @param {string[]} given.rules what fails, as tests/standins/README.md says
 * @param {string[]} given.moments from when on: 'start', 'middle', 'stop'
 * @param {number} given.pictures of the window that a recording waits for, up to the fault or the stop
 * @param {number} [given.picturesAfter] that it waits for after a fault in the middle (the same)
 * @param {Array[]} [given.settings] [[method, ...arguments], ...]
 * @returns {Promise<{outcomes: object[], good: object, picture: object}>} of each recording: rule, moment, started and
 *   stopped (what was returned, or an exception as its class and text), capturing, errors, warnings, file, painted (the
 *   window's count at the start and at the end), failedAt (the count right after the fault in the middle); `picture` is
 *   the window's
 */
async function recordUnder(t, given) {
  const window = await openPattern(t, { title: 'Faults', ...SMALL });
  const target = { faults: FAULTS_FILE, dir: scratchFolder(), handle: window.handle, progress: window.progress };
  const { value } = await scenario(recordWithFaults, { ...target, settings: [], ...given }, { within: 300000 });
  return { ...value, picture: window.picture };
}

async function recordWithFaults({ Brisolte, log, painted, paintedMore, require: load }, given) {
  const files = load('node:fs');
  const capture = new Brisolte();
  given.settings.forEach(([method, ...words]) => capture[method](...words));
  const fail = (rule) => files.writeFileSync(given.faults, `${rule}\r\n`);
  const attempt = (call) => {
    try {
      return call();
    } catch (error) {
      return `${error.constructor.name}: ${error.message}`;
    }
  };
  const record = async (rule, moment, dir) => {
    files.mkdirSync(dir);
    capture.setOutputDir(dir);
    capture.setWindow(given.handle);
    const mark = log.mark();
    const before = painted(given.progress);
    if (moment === 'start') {
      fail(rule);
    }
    const started = attempt(() => capture.startRecord());
    let failedAt;
    if (started === true) {
      await log.line('First Video frame arrived at: ', mark);
      await paintedMore(given.progress, given.pictures);
      if (moment === 'middle') {
        fail(rule);
        failedAt = painted(given.progress);
        await paintedMore(given.progress, given.picturesAfter ?? given.pictures);
      }
      if (moment === 'stop') {
        fail(rule);
      }
    }
    const stopped = attempt(() => capture.stopRecord());
    files.rmSync(given.faults, { force: true });
    const seen = log.since(mark);
    const outcome = { rule, moment, started, stopped, capturing: capture.isCapturing(), file: capture.getSaveFilePath() };
    const said = { errors: seen.errors, warnings: seen.messages('WARNING') };
    return { ...outcome, ...said, failedAt, painted: [before, painted(given.progress)] };
  };
  const outcomes = [];
  for (const rule of given.rules) {
    for (const moment of given.moments) {
      outcomes.push(await record(rule, moment, `${given.dir}\\${outcomes.length}`));
    }
  }
  return { outcomes, good: await record('', 'never', `${given.dir}\\good`) };
}

/** A recording in words, for a test that fails. */
const told = ({ rule, moment, started, stopped, errors, warnings }) =>
  `${rule} at ${moment}: started ${started}, stopped ${stopped}\n${[...errors, ...warnings].join('\n')}`;

module.exports = { recordUnder, told };
