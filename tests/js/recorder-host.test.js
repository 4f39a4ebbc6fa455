'use strict';

// What becomes of a recording whose application ends in the middle of it, in each way and at random moments.
// BRISOLTE_HOST_ENDS says how often, four times unless it does; `npm run recorder` does it fifty times.

const assert = require('node:assert/strict');
const { execFileSync, spawn } = require('node:child_process');
const { once } = require('node:events');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { setTimeout: delay } = require('node:timers/promises');
const { openPattern } = require('./support/desktop');
const media = require('./support/media');
const { packageFolder } = require('./support/package');
const { isThere } = require('./support/processes');
const { scratchFile, scratchFolder } = require('./support/scratch');
const { waitFor } = require('./support/wait');

const TIMES = Number(process.env.BRISOLTE_HOST_ENDS ?? 4);
const LONGEST_MS = 4000;
const MAY_LACK_MS = 1000;
// Each recording starts two processes of Node.js, which takes half a minute on a machine that is very busy.
const WITHIN_MS = 120_000;

// Those that the application does itself have no function here.
const ENDS = {
  exit: undefined,
  exception: undefined,
  TerminateProcess: (host) => host.kill(),
  'the task manager': (host) => execFileSync('taskkill', ['/F', '/PID', String(host.pid)], { stdio: 'ignore' }),
};

/** An application that records, in a process of its own; resolves when it does. */
async function hostOf(options, end, after) {
  const [job, told, output] = [scratchFile('json'), scratchFile('told'), scratchFile('log')];
  fs.writeFileSync(job, JSON.stringify({ entry: path.join(packageFolder, 'recorder.js'), options, told, end, after }));
  const log = fs.openSync(output, 'w');
  const host = spawn(process.execPath, [path.join(__dirname, 'support', 'recording-host.js'), job], { stdio: ['ignore', log, log] });
  fs.closeSync(log);
  const ended = once(host, 'exit');
  await waitFor('the recording', () => {
    assert.equal(host.exitCode, null, fs.readFileSync(output, 'utf8'));
    return fs.existsSync(told);
  }, WITHIN_MS);
  return { host, ended, endedAt: () => Number(fs.readFileSync(`${told}.end`, 'utf8')), ...JSON.parse(fs.readFileSync(told, 'utf8')) };
}

/** Lets an application end while it records; gives how much of the recording is missing, in milliseconds. */
async function endWhileRecording(t, way) {
  const window = await openPattern(t, { title: 'Of a host', x: 20, y: 20, width: 320, height: 192 });
  const file = path.join(scratchFolder(), 'talk.mp4');
  const after = Math.round(Math.random() * LONGEST_MS);
  const { host, ended, pid, startedAt, endedAt } = await hostOf({ file, window: window.handle, microphone: 'default' }, way, after);
  let at;
  if (ENDS[way]) {
    await delay(after);
    at = Date.now();
    ENDS[way](host);
  }
  await ended;
  at ??= endedAt();
  await waitFor('the end of the process that records', () => !isThere(pid), WITHIN_MS);
  assert.deepEqual(fs.readdirSync(path.dirname(file)), ['talk.mp4'], `after ${after} ms`);
  media.assertWhole([file]);
  const seconds = Number(media.describe(file).format.duration);
  await window.close();
  return Math.max(at - startedAt - seconds * 1000, 0);
}

for (const [way] of Object.entries(ENDS)) {
  test(`a recording is complete after its application ended by ${way}`, async (t) => {
    const lacks = [];
    for (let i = 0; i < Math.ceil(TIMES / Object.keys(ENDS).length); i += 1) {
      lacks.push(await endWhileRecording(t, way));
    }
    t.diagnostic(`${lacks.length} times, ${Math.round(Math.max(...lacks))} ms missing at most`);
    assert.ok(Math.max(...lacks) < MAY_LACK_MS, lacks.join());
  });
}
