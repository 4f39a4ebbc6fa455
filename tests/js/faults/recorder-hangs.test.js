'use strict';

// A process of a Recorder that hangs in a call of the system, and does not come back: the application goes on, is told why nothing
// comes, and records again.

const assert = require('node:assert/strict');
const { once } = require('node:events');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { openPattern } = require('../support/desktop');
const { FAULTS_FILE, letSoundFail } = require('../support/faults');
const media = require('../support/media');
const { packageFolder } = require('../support/package');
const { isThere } = require('../support/processes');
const { scratchFolder } = require('../support/scratch');
const { waitFor } = require('../support/wait');

const { Recorder } = require(path.join(packageFolder, 'recorder.js'));
// Shorter than those that applications have, and longer than a start and a stop that go well.
const LIMITS = { limits: { start: 20_000, stop: 12_000 } };
const SECONDS = { start: 20, stop: 12 };

const HANGS = {
  start: ['CreateVideoProcessorEnumerator', (recorder) => recorder.start()],
  stop: [
    'microphone:StopClient',
    async (recorder, hang) => {
      await recorder.start();
      await once(recorder, 'progress');
      hang();
      await recorder.stop();
    },
  ],
};

for (const [when, [call, use]] of Object.entries(HANGS)) {
  test(`a process that hangs at the ${when} is told with the end of its log, and the next recording is whole`, async (t) => {
    letSoundFail(t);
    const window = await openPattern(t, { title: 'Of a process that hangs', x: 20, y: 20, width: 320, height: 192 });
    const recorder = new Recorder({ window: window.handle, directory: scratchFolder(), microphone: 'default' }, LIMITS);
    t.after(() => recorder.close());
    t.after(() => fs.rmSync(FAULTS_FILE, { force: true }));
    let [pid, last, turns] = [undefined, undefined, 0];
    recorder.on('log', ({ text }) => {
      pid = recorder.pid ?? pid;
      last = text;
    });
    const hang = () => fs.writeFileSync(FAULTS_FILE, `${call} hang\r\n`);
    if (when === 'start') {
      hang();
    }
    const turning = setInterval(() => (turns += 1), 100);
    await assert.rejects(use(recorder, hang), (error) => {
      assert.equal(error.code, 'ERR_RECORDER_TIMEOUT');
      assert.match(error.message, new RegExp(`^The recorder's process did not answer within ${SECONDS[when]} s and was ended`));
      assert.equal(error.log.at(-1).text, last);
      return true;
    });
    clearInterval(turning);
    assert.ok(turns > SECONDS[when], `the loop of the application turned ${turns} times`);
    assert.equal(recorder.recording, false);
    await waitFor('the end of the process', () => !isThere(pid));
    fs.rmSync(FAULTS_FILE);
    await recorder.start();
    await once(recorder, 'progress');
    media.assertWhole([(await recorder.stop()).file]);
  });
}
