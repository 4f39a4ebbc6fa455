'use strict';

// What recorders leave behind in their application. BRISOLTE_RECORDINGS says how many recordings there are, twenty unless it does;
// `npm run recorder` makes 200.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { packageFolder } = require('./support/package');
const { isThere } = require('./support/processes');
const { scratchFolder } = require('./support/scratch');
const { usage } = require('./support/usage');

const { Recorder } = require(path.join(packageFolder, 'recorder.js'));
const RECORDINGS = Number(process.env.BRISOLTE_RECORDINGS ?? 20);
const PROCESSES = 4;
const REGION = { left: 0, top: 0, width: 320, height: 192 };

/** Records over and over, in one process; gives the process. */
async function record(file, times) {
  const recorder = new Recorder({ file, region: REGION, overwrite: true });
  await recorder.start();
  const { pid } = recorder;
  for (let i = 1; i < times; i += 1) {
    await recorder.stop();
    await recorder.start();
  }
  await recorder.stop();
  assert.equal(recorder.pid, pid);
  await recorder.close();
  return pid;
}

test('recordings leave no process, no handle and no file behind', async (t) => {
  const file = path.join(scratchFolder(), 'again.mp4');
  // What Node.js loads for the first child process stays.
  await record(file, 1);
  const before = usage();
  const pids = [];
  for (let i = 0; i < PROCESSES; i += 1) {
    pids.push(await record(file, RECORDINGS / PROCESSES));
  }
  const after = usage();
  t.diagnostic(`${RECORDINGS} recordings in ${PROCESSES} processes: ${after.handles - before.handles} handles more`);
  assert.deepEqual(pids.filter(isThere), []);
  assert.deepEqual(fs.readdirSync(path.dirname(file)), ['again.mp4']);
  assert.ok(after.handles <= before.handles + PROCESSES, `${before.handles} handles, then ${after.handles}`);
  assert.ok(after.threads <= before.threads + 1, `${before.threads} threads, then ${after.threads}`);
});
