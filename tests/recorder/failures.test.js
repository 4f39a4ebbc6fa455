'use strict';

// What the host is told when its recorder does not do what it should.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { launchNode } = require('../../lib/launch');
const { Recorder, RecorderError } = require('../../recorder');
const { waitFor } = require('../js/support/wait');
const { isThere } = require('../js/support/processes');
const { launcherOfStandIn } = require('./support/launch');
const { folderOf, recorderOf } = require('./support/recorder');

/** What the next `stop` tells; unlike `once` of Node.js it does not mind an `error` before it. */
const stopOf = (recorder) => new Promise((resolve) => recorder.once('stop', resolve));

const SHORT = { limits: { start: 1000, stop: 1000, signOfLife: 2500 } };

test('a start that is refused says why, and what to do', async (t) => {
  const directory = folderOf(t);
  const { recorder, named } = recorderOf(t, { directory, encoder: 'refuses' });
  await assert.rejects(recorder.start(), (error) => {
    assert.ok(error instanceof RecorderError && error instanceof Error);
    assert.equal(error.name, 'RecorderError');
    assert.equal(error.code, 'ERR_RECORDER_START');
    const sentence = 'The recording did not start. Encoder refuses not found! Recorder.encoders() lists the names that can be given.';
    assert.equal(error.message, sentence);
    assert.deepEqual(error.failures, ['Encoder refuses not found!', 'Failed to initialize encoder']);
    assert.equal(error.log.at(-1).text, 'Failed to initialize encoder');
    return true;
  });
  assert.deepEqual([named('start'), named('error'), named('stop')], [[], [], []]);
  assert.equal(recorder.recording, false);
  assert.deepEqual(fs.readdirSync(directory), []);
});

test('a start that throws says why', async (t) => {
  const { recorder } = recorderOf(t, { encoder: 'throws' });
  await assert.rejects(recorder.start(), { code: 'ERR_RECORDER_START', failures: ['Failed to start video capture'] });
});

test('a start after which nothing would be recorded is refused, and leaves nothing', async (t) => {
  const directory = folderOf(t);
  const file = path.join(directory, 'talk.mp4');
  fs.writeFileSync(file, 'old');
  const { recorder, named } = recorderOf(t, { directory: undefined, file, overwrite: true, encoder: 'headless' });
  await assert.rejects(recorder.start(), (error) => {
    assert.equal(error.code, 'ERR_RECORDER_START');
    assert.match(error.message, /^The recording did not start\. FFmpegEncoder: Failed to write file header: Invalid argument\. Leave out the sound, /);
    assert.match(error.failures[1], /cannot hold mp3 sound/);
    return true;
  });
  assert.deepEqual([named('start'), named('error'), named('stop'), recorder.recording], [[], [], [], false]);
  assert.deepEqual(fs.readdirSync(directory), ['talk.mp4']);
  assert.equal(fs.readFileSync(file, 'utf8'), 'old');
});

test('a directory that does not exist is named', async (t) => {
  const directory = path.join(folderOf(t), 'nonesuch');
  const { recorder } = recorderOf(t, { directory });
  const message = `The recording did not start. Invalid or non-existent output directory: ${directory}. Give a directory that exists.`;
  await assert.rejects(recorder.start(), { message });
});

test('a process that dies at the start is told, and another one can be started', async (t) => {
  const { recorder } = recorderOf(t, { encoder: 'dies' });
  for (let i = 0; i < 2; i += 1) {
    await assert.rejects(recorder.start(), { code: 'ERR_RECORDER_LOST', message: /^The recorder's process ended unexpectedly, with / });
    assert.equal(recorder.pid, undefined);
  }
});

test('a process that dies while it records is told by events, and the next stop is rejected', async (t) => {
  const { recorder, named } = recorderOf(t, { encoder: 'diesLater' });
  await recorder.start();
  const stop = await stopOf(recorder);
  const [error] = named('error');
  assert.equal(error.code, 'ERR_RECORDER_LOST');
  assert.ok(error.log.some(({ text }) => text.startsWith('settings: ')));
  assert.deepEqual([stop.reason, stop.files], ['failed', [stop.file]]);
  assert.ok(fs.existsSync(stop.file));
  await assert.rejects(recorder.stop(), error);
  await recorder.start();
  await stopOf(recorder);
  assert.equal(named('error').length, 2);
});

test('a host that listens to no errors survives its recorder', async (t) => {
  const { recorder, named } = recorderOf(t, { encoder: 'diesLater' });
  recorder.removeAllListeners('error');
  await recorder.start();
  const { reason } = await stopOf(recorder);
  assert.deepEqual([reason, named('error')], ['failed', []]);
});

const LOST = [
  [{ encoder: 'libvpx', safeFile: false }, '.webm', true],
  [{}, '.mp4', true],
  [{ safeFile: false }, '.mp4', false],
  [{ encoder: 'mf_h264' }, '.mp4', false],
];

for (const [options, ending, plays] of LOST) {
  test(`what can be played of a lost recording is named: ${JSON.stringify(options)}`, async (t) => {
    const { recorder, named } = recorderOf(t, options);
    await recorder.start();
    const [{ file }] = named('start');
    process.kill(recorder.pid, 'SIGKILL');
    const { files } = await stopOf(recorder);
    assert.equal(path.extname(file), ending);
    const expected = plays ? [file] : [];
    assert.deepEqual([files, named('error')[0].files], [expected, expected]);
  });
}

const HANGS = {
  'at the start': ['hangs', (recorder) => recorder.start()],
  'at the stop': ['hangsAtStop', (recorder) => recorder.start().then(() => recorder.stop())],
};

for (const [when, [encoder, call]] of Object.entries(HANGS)) {
  test(`a process that does not answer ${when} is ended in time`, async (t) => {
    const { recorder } = recorderOf(t, { encoder }, SHORT);
    let pid;
    recorder.on('log', () => (pid = recorder.pid ?? pid));
    await assert.rejects(call(recorder), { code: 'ERR_RECORDER_TIMEOUT', message: /did not answer within 1 s and was ended/ });
    await waitFor('the end of the process', () => !isThere(pid));
  });
}

test('a process that hangs while it records is ended in time', async (t) => {
  const { recorder, named } = recorderOf(t, { encoder: 'hangsLater' }, SHORT);
  await recorder.start();
  const { pid } = recorder;
  const { reason } = await stopOf(recorder);
  assert.deepEqual([reason, named('error')[0].code], ['failed', 'ERR_RECORDER_TIMEOUT']);
  await waitFor('the end of the process', () => !isThere(pid));
});

test('a process that takes its time to begin and to complete a file is waited for, whoever asked it to', async (t) => {
  const options = { encoder: 'slow', segments: { seconds: 1 }, stopAfter: { seconds: 7 } };
  const { recorder, named } = recorderOf(t, options, { limits: { start: 8000, stop: 8000, signOfLife: 2500 } });
  await recorder.start();
  const { reason, files } = await stopOf(recorder);
  assert.deepEqual([reason, named('error')], ['seconds', []]);
  assert.equal(files.length, 2);
});

test('a process that hangs while it completes a file by itself is ended in time', async (t) => {
  const { recorder, named } = recorderOf(t, { encoder: 'hangsAtStop', stopAfter: { seconds: 0.5 } }, SHORT);
  await recorder.start();
  const { reason } = await stopOf(recorder);
  assert.deepEqual([reason, named('error')[0].code], ['failed', 'ERR_RECORDER_TIMEOUT']);
});

test('an output that breaks off does not end the host, and the recording is completed', async (t) => {
  let child;
  const launcher = async () => {
    const launch = await launcherOfStandIn();
    return () => (child = launch());
  };
  const recorder = new Recorder({ directory: folderOf(t) }, { launcher });
  t.after(() => recorder.close());
  await recorder.start();
  [child.stdout, child.stderr].forEach((stream) => stream.destroy(new Error('broken off')));
  const { file, reason } = await recorder.stop();
  assert.equal(reason, 'requested');
  assert.ok(fs.existsSync(file));
});

test('a file that could not be completed is told, and does not take the place of another', async (t) => {
  const file = path.join(folderOf(t), 'talk.mp4');
  fs.writeFileSync(file, 'old');
  const { recorder, named } = recorderOf(t, { directory: undefined, file, overwrite: true, encoder: 'breaks' });
  await recorder.start();
  await assert.rejects(recorder.stop(), (error) => {
    assert.equal(error.code, 'ERR_RECORDER_INCOMPLETE');
    assert.match(error.message, /could not be completed\. FFmpegEncoder: Failed to write trailer!!!!! Make room on the disk\.$/);
    return true;
  });
  assert.equal(fs.readFileSync(file, 'utf8'), 'old');
  assert.deepEqual([named('stop')[0].reason, named('error').length], ['failed', 1]);
});

test('a file without a byte in it is no recording, whatever its container', async (t) => {
  const { recorder, named } = recorderOf(t, { encoder: 'empty' });
  await recorder.start();
  await assert.rejects(recorder.stop(), { code: 'ERR_RECORDER_INCOMPLETE', message: /\.avi could not be completed\. .* Make room on the disk\.$/, files: [] });
  assert.deepEqual([named('stop')[0].reason, named('stop')[0].files], ['failed', []]);
});

test('a process that cannot be started is told', async () => {
  const launches = [
    () => {
      throw new Error('not permitted');
    },
    () => require('node:child_process').spawn('/nonesuch/program', { stdio: ['ignore', 'pipe', 'pipe', 'ipc'] }),
  ];
  for (const start of launches) {
    let launched = 0;
    const recorder = new Recorder({ directory: '.' }, { launcher: async () => () => start((launched += 1)) });
    for (let i = 0; i < 2; i += 1) {
      await assert.rejects(recorder.start(), { code: 'ERR_RECORDER_SPAWN', message: /^The recorder's process could not be started: / });
      assert.equal(recorder.pid, undefined);
    }
    assert.equal(launched, 2);
  }
});

test('a program that is no recorder is told', async (t) => {
  const program = path.join(folderOf(t), 'other.js');
  fs.writeFileSync(program, "console.error('not a recorder'); process.exit(3);");
  const recorder = new Recorder({ directory: '.' }, { launcher: async () => () => launchNode(program) });
  await assert.rejects(recorder.start(), (error) => {
    assert.deepEqual([error.code, error.log.map(({ text }) => text)], ['ERR_RECORDER_LOST', ['not a recorder']]);
    return true;
  });
});

test('on other systems than Windows a start is rejected with the sentence of the module', { skip: process.platform === 'win32' }, async (t) => {
  const recorder = new Recorder({ directory: folderOf(t) });
  t.after(() => recorder.close());
  const message = `brisolte records on Windows x64; this is ${process.platform} ${process.arch}.`;
  await assert.rejects(recorder.start(), { code: 'ERR_RECORDER_LOAD', message });
  await assert.rejects(Recorder.monitors(), { code: 'ERR_RECORDER_LOAD', message });
});

test('an abort stops the recording and keeps its file', async (t) => {
  const controller = new AbortController();
  const { recorder, named } = recorderOf(t, { signal: controller.signal });
  await recorder.start();
  controller.abort();
  const { reason, file } = await stopOf(recorder);
  assert.equal(reason, 'aborted');
  assert.ok(fs.existsSync(file));
  assert.deepEqual(named('error'), []);
  await assert.rejects(recorder.start(), { name: 'AbortError' });
});

test('an abort while it starts rejects the start, and nothing runs afterwards', async (t) => {
  const controller = new AbortController();
  const { recorder, named } = recorderOf(t, { signal: controller.signal });
  const starting = recorder.start();
  controller.abort();
  await assert.rejects(starting, { name: 'AbortError' });
  assert.deepEqual([recorder.recording, named('stop').map(({ reason }) => reason)], [false, ['aborted']]);
});
