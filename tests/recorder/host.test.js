'use strict';

// What becomes of a recording whose application ends, or stands still.

const assert = require('node:assert/strict');
const { spawnSync } = require('node:child_process');
const { once } = require('node:events');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { Worker } = require('node:worker_threads');
const { waitFor } = require('../js/support/wait');
const { isThere } = require('../js/support/processes');
const { hostOf } = require('./support/application');
const { folderOf } = require('./support/recorder');

const RECORDER = path.join(__dirname, '..', '..', 'recorder');
const LAUNCH = path.join(__dirname, 'support', 'launch');
const STAY = 'setInterval(() => {}, 1000)';

const ENDS = {
  'process.exit': { body: 'process.exit(3)', code: 3 },
  'an exception that nobody catches': { body: "throw new Error('uncaught')", code: 1 },
  'a rejection that nobody handles': { body: "Promise.reject(new Error('unhandled'))", code: 1 },
  'being killed': { body: STAY, kill: true, code: null },
  'process.exit in mid-sentence of a log': { body: 'process.exit(3)', options: { encoder: 'floods' }, code: 3 },
};

for (const [name, { body, options, kill, code }] of Object.entries(ENDS)) {
  test(`a recording is completed after its application ended by ${name}`, async (t) => {
    const { child, ended, file, recorder } = await hostOf(t, body, options);
    if (kill) {
      child.kill('SIGKILL');
    }
    // With its output closed: the recorder holds nothing that who started the application waits for.
    assert.equal((await ended)[0], code);
    await waitFor('the end of the process', () => !isThere(recorder));
    assert.deepEqual(fs.readdirSync(path.dirname(file)).sort(), ['talk.mp4', 'told']);
  });
}

const WHILE_STARTING = {
  'with the start of the process': ['setTimeout(end)', []],
  'in the middle of the start': ["recorder.on('log', ({ text }) => text.startsWith('settings: ') && end())", ['talk.mp4']],
};

for (const [when, [wait, left]] of Object.entries(WHILE_STARTING)) {
  test(`an application that ends ${when} leaves no process and no broken file behind`, async (t) => {
    const file = path.join(folderOf(t), 'talk.mp4');
    const body = `
      const { Recorder } = require(${JSON.stringify(RECORDER)});
      const { launcherOfStandIn } = require(${JSON.stringify(LAUNCH)});
      const recorder = new Recorder({ file: process.argv[1], encoder: 'slowAtStart' }, { launcher: launcherOfStandIn });
      const end = () => {
        console.log(recorder.pid);
        process.exit();
      };
      recorder.start();
      ${wait};`;
    const { stdout } = spawnSync(process.execPath, ['--eval', body, file], { encoding: 'utf8' });
    assert.ok(Number(stdout) > 0, stdout);
    await waitFor('the end of the process', () => !isThere(Number(stdout)));
    assert.deepEqual(fs.readdirSync(path.dirname(file)), left);
  });
}

test('a process that hangs when its application has ended does not stay', async (t) => {
  const { ended, recorder } = await hostOf(t, 'process.exit()', { encoder: 'hangsAtStop' });
  await ended;
  await waitFor('the end of the process', () => !isThere(recorder));
});

test('a worker thread that is ended while it records leaves a complete file', async (t) => {
  const file = path.join(folderOf(t), 'talk.mp4');
  const body = `
    const { parentPort, workerData } = require('node:worker_threads');
    const { Recorder } = require(${JSON.stringify(RECORDER)});
    const { launcherOfStandIn } = require(${JSON.stringify(LAUNCH)});
    const recorder = new Recorder({ file: workerData }, { launcher: launcherOfStandIn });
    recorder.once('progress', () => parentPort.postMessage('records'));
    recorder.start();`;
  const worker = new Worker(body, { eval: true, workerData: file });
  await once(worker, 'message');
  await worker.terminate();
  await waitFor('the file', () => fs.readdirSync(path.dirname(file)).join() === 'talk.mp4');
  assert.ok(fs.readFileSync(file).includes('moov'));
});

test('an application that has nothing more to do goes on while it records, and ends after it', async (t) => {
  const body = "recorder.on('stop', ({ reason }) => console.log(reason))";
  const { ended, file, output } = await hostOf(t, body, { stopAfter: { seconds: 1.5 } });
  assert.equal((await ended)[0], 0);
  assert.equal(output(), 'seconds\n');
  assert.ok(fs.existsSync(file));
});

test('what a listener throws is an exception of the application, and the recording goes on', async (t) => {
  const body = `let thrown = [];
    process.on('uncaughtException', ({ message }) => thrown.push(message));
    const fail = (name) => recorder.on(name, () => { throw new Error(name); });
    ['progress', 'segment', 'stop'].forEach(fail);
    process.on('exit', () => console.log([...new Set(thrown)].join()));`;
  const { ended, output } = await hostOf(t, body, { segments: { seconds: 1 }, stopAfter: { seconds: 2.5 } });
  assert.equal((await ended)[0], 0);
  assert.equal(output(), 'progress,segment,stop\n');
});

test('an application that stands still does not halt its recording, however much is logged', async (t) => {
  const body = `recorder.on('stop', (result) => console.log(JSON.stringify(result)));
    Atomics.wait(new Int32Array(new SharedArrayBuffer(4)), 0, 0, 14000)`;
  const { child, file, output } = await hostOf(t, body, { encoder: 'floods', stopAfter: { seconds: 11 } });
  await waitFor('the file', () => fs.existsSync(file));
  assert.deepEqual([output(), child.exitCode], ['', null], 'the application stands still');
  await waitFor('the application', () => output().endsWith('\n'));
  const { reason, seconds } = JSON.parse(output());
  assert.equal(reason, 'seconds');
  assert.ok(seconds < 12.5, `${seconds} s`);
});
