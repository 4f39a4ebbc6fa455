'use strict';

// Recordings that end by themselves, or are split.

const assert = require('node:assert/strict');
const { once } = require('node:events');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { folderOf, recorderOf } = require('./support/recorder');

const LIMITS = {
  seconds: [{ stopAfter: { seconds: 0.7 } }, ({ seconds }) => seconds >= 0.7],
  bytes: [{ stopAfter: { bytes: 20_000 } }, ({ bytes }) => bytes >= 20_000],
  // No disk has so much.
  freeBytes: [{ stopAfter: { freeBytes: 2 ** 53 } }, () => true],
};

for (const [reason, [options, holds]] of Object.entries(LIMITS)) {
  test(`a recording is stopped by its limit of ${reason}`, async (t) => {
    const { recorder, named } = recorderOf(t, { ...options });
    await recorder.start();
    const [result] = await once(recorder, 'stop');
    assert.equal(result.reason, reason);
    assert.ok(holds(result), JSON.stringify(result));
    assert.deepEqual(await recorder.stop(), result);
    assert.equal(named('stop').length, 1);
  });
}

for (const logLevel of ['debug', 'error']) {
  test(`a recording with the log level ${logLevel} is stopped when the module says that its disk is nearly full`, async (t) => {
    const { recorder, named } = recorderOf(t, { encoder: 'full', logLevel, stopAfter: { seconds: 5 } });
    await recorder.start();
    const [{ reason, file }] = await once(recorder, 'stop');
    assert.equal(reason, 'freeBytes');
    assert.ok(fs.existsSync(file));
    const told = named('log').filter(({ source }) => source === 'brisolte');
    assert.equal(told.some(({ level }) => level === 'warning'), logLevel === 'debug');
  });
}

test('a long recording is split, and each part is told when it is complete', async (t) => {
  const file = path.join(folderOf(t), 'talk.mp4');
  const { recorder, named } = recorderOf(t, { directory: undefined, file, segments: { seconds: 1 }, stopAfter: { seconds: 2.5 } });
  await recorder.start();
  const segments = [];
  recorder.on('segment', (segment) => segments.push({ ...segment, there: fs.existsSync(segment.file) }));
  const [result] = await once(recorder, 'stop');
  const names = ['talk-001.mp4', 'talk-002.mp4', 'talk-003.mp4'];
  assert.deepEqual(result.files.map((each) => path.basename(each)), names);
  assert.equal(result.file, result.files.at(-1));
  assert.deepEqual(fs.readdirSync(path.dirname(file)), names);
  assert.deepEqual(segments.map((segment) => segment.file), result.files.slice(0, 2));
  assert.ok(segments.every(({ there, seconds, bytes }) => there && seconds >= 1 && bytes > 0));
  assert.ok(result.seconds >= 2.5 && result.seconds < 10, `${result.seconds} s`);
  assert.equal(result.bytes, result.files.reduce((sum, each) => sum + fs.statSync(each).size, 0));
  assert.equal(named('stop').length, 1);
});

test('a recording is split by size, into parts with names of the module', async (t) => {
  const { recorder } = recorderOf(t, { segments: { bytes: 10_000 }, stopAfter: { bytes: 70_000 } });
  await recorder.start();
  const [{ files }] = await once(recorder, 'stop');
  assert.ok(files.length >= 2, files.join());
  assert.equal(new Set(files).size, files.length);
  files.slice(0, -1).forEach((file) => assert.ok(fs.statSync(file).size >= 10_000));
});

test('the first part must not exist', async (t) => {
  const folder = folderOf(t);
  fs.writeFileSync(path.join(folder, 'talk-001.mp4'), 'old');
  const { recorder } = recorderOf(t, { directory: undefined, file: path.join(folder, 'talk.mp4'), segments: { seconds: 1 } });
  await assert.rejects(recorder.start(), { code: 'ERR_RECORDER_EXISTS', message: /talk-001\.mp4 exists/ });
});
