'use strict';

// Each call that can be made to fail does so once: when a recording starts, in its middle and when it stops.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { assertRecording } = require('../support/check');
const { openPattern } = require('../support/desktop');
const { ACCESS_DENIED, FAULTS_FILE } = require('../support/faults');
const media = require('../support/media');
const { scenario } = require('../support/scenario');
const { scratchFolder } = require('../support/scratch');

const SMALL = { x: 20, y: 20, width: 320, height: 192 };
const DEVICE_REMOVED = '0x887a0005';

/** Every call that the stand-ins' own table names. */
function failingCalls() {
  const text = fs.readFileSync(path.join(__dirname, '..', '..', 'standins', 'README.md'), 'utf8');
  const rows = text.slice(text.indexOf('## Faults')).match(/^\| `.*?\|/gm);
  return rows.flatMap((row) => [...row.matchAll(/`(\w+)`/g)].map(([, name]) => name));
}

// For each rule one attempt to record, during which the call fails at the moment.
async function recordWithFaults({ Brisolte, log, painted, paintedMore, require: load }, given) {
  const files = load('node:fs');
  const capture = new Brisolte();
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
    if (started === true) {
      await log.line('First Video frame arrived at: ', mark);
      await paintedMore(given.progress, given.pictures);
      if (moment === 'middle') {
        fail(rule);
        await paintedMore(given.progress, given.pictures);
      }
      if (moment === 'stop') {
        fail(rule);
      }
    }
    const stopped = attempt(() => capture.stopRecord());
    files.rmSync(given.faults, { force: true });
    const outcome = { rule, moment, started, stopped, capturing: capture.isCapturing(), errors: log.since(mark).errors };
    return { ...outcome, file: capture.getSaveFilePath(), painted: [before, painted(given.progress)] };
  };
  const outcomes = [];
  for (const rule of given.rules) {
    for (const moment of given.moments) {
      outcomes.push(await record(rule, moment, `${given.dir}\\${outcomes.length}`));
    }
  }
  return { outcomes, good: await record('', 'never', `${given.dir}\\good`) };
}

async function recordUnder(t, given) {
  const window = await openPattern(t, { title: 'Inventory', ...SMALL });
  const target = { faults: FAULTS_FILE, dir: scratchFolder(), handle: window.handle, progress: window.progress };
  const { value } = await scenario(recordWithFaults, { ...target, ...given }, { within: 300000 });
  assert.deepEqual([value.good.started, value.good.stopped, value.good.errors], [true, true, []]);
  assertRecording(value.good, { picture: window.picture });
  return value.outcomes;
}

const told = ({ rule, moment, started, stopped, errors }) =>
  `${rule} at ${moment}: started ${started}, stopped ${stopped}\n${errors.join('\n')}`;

test('a call that fails once, at whatever moment, costs no more than the attempt', async (t) => {
  const calls = failingCalls();
  assert.ok(calls.length > 30 && calls.includes('Map'), `${calls}`);
  const rules = calls.map((call) => `${call} ${ACCESS_DENIED} times 1`);
  const outcomes = await recordUnder(t, { rules, moments: ['start', 'middle', 'stop'], pictures: 12 });
  for (const outcome of outcomes) {
    const { moment, started, stopped, capturing } = outcome;
    assert.equal(capturing, false, told(outcome));
    assert.equal(stopped, started === true, told(outcome));
    if (moment === 'start') {
      assert.ok(typeof started === 'boolean' || /^Error: .*80070005/i.test(started), told(outcome));
    } else {
      assert.equal(started, true, told(outcome));
    }
  }
  media.assertWhole(outcomes.filter(({ started }) => started === true).map(({ file }) => file));
});

test('a device that is removed in mid-recording ends the picture, not the recording', async (t) => {
  const lost = ['CreateTexture2D', 'CreateInputView', 'CreateOutputView', 'VideoProcessorBlt', 'Map'];
  const rules = [lost.map((call) => `${call} ${DEVICE_REMOVED}`).join('\r\n')];
  const outcomes = await recordUnder(t, { rules, moments: ['middle'], pictures: 20 });
  const [{ started, stopped, errors, file }] = outcomes;
  assert.deepEqual([started, stopped], [true, true]);
  assert.ok(errors.some((text) => /887a0005/i.test(text)), errors.join('\n'));
  media.assertWhole([file]);
});
