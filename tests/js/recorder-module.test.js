'use strict';

// recorder.node, the module of a recorder's process: what it has beyond the class of the main entry.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { METHODS, packageFolder } = require('./support/package');
const { scenario } = require('./support/scenario');
const { scratchFolder, smallDisk } = require('./support/scratch');
const { openPattern } = require('./support/desktop');
const media = require('./support/media');

const ENGINE = path.join(packageFolder, 'lib', 'process', 'engine.js');
const MORE = [
  ...['onEvent', 'setPlayableThroughout', 'setAudioCodec', 'pauseRecord', 'resumeRecord', 'setVolume', 'setMuted', 'takeLevels'],
  ...['setShowsCursor', 'setShowsBorder', 'setLargestPicture', 'setEncoderOptions'],
];

test('its class has the methods of the main entry in their order, and more', () => {
  const { Brisolte } = require(ENGINE);
  new Brisolte().setLogLevel(5);
  const names = Object.getOwnPropertyNames(Brisolte.prototype).filter((name) => name !== 'constructor');
  assert.deepEqual(names, [...METHODS, ...MORE]);
});

test('what is no function cannot listen to events', () => {
  const { Brisolte } = require(ENGINE);
  for (const words of [[], [undefined], ['diskFull'], [{}]]) {
    assert.throws(() => new Brisolte().onEvent(...words), { message: 'Listening to events requires a function' });
  }
});

test('what is no codec of sound, or no bit rate, is not taken', () => {
  const { Brisolte } = require(ENGINE);
  for (const words of [[], [undefined], [5], ['flac'], ['AAC'], [{}]]) {
    assert.throws(() => new Brisolte().setAudioCodec(...words), { message: 'Setting audio codec requires aac, mp3 or opus' });
  }
  for (const bitRate of [null, '96000', {}]) {
    assert.throws(() => new Brisolte().setAudioCodec('aac', bitRate), { message: "An audio codec's bit rate must be a number" });
  }
  const capture = new Brisolte();
  capture.setLogLevel(5);
  assert.deepEqual([capture.setAudioCodec('opus'), capture.setAudioCodec('mp3', undefined), capture.setAudioCodec('aac', 96_000)], [true, true, true]);
});

test('what is no size or has no texts is refused as an option', () => {
  const { Brisolte } = require(ENGINE);
  const capture = new Brisolte();
  for (const words of [[], [5], [{}], [{ width: 640 }], [{ width: '640', height: 360 }], [{ width: 1, height: 360 }], [{ width: NaN, height: 2 }]]) {
    assert.throws(() => capture.setLargestPicture(...words), { message: /largest picture/ });
  }
  for (const words of [[], ['crf=20'], [{ crf: 20 }], [{ crf: undefined }]]) {
    assert.throws(() => capture.setEncoderOptions(...words), { message: 'Setting encoder options requires an object parameter with texts' });
  }
  const throws = { get crf() { throw new RangeError('own'); } }; // prettier-ignore
  assert.throws(() => capture.setEncoderOptions(throws), RangeError);
  assert.deepEqual([capture.setLargestPicture({ width: 64, height: 48 }), capture.setEncoderOptions({})], [true, true]);
});

test('a disk that is nearly full is told, once, and the file is whole', async (t) => {
  const dir = smallDisk(t);
  await openPattern(t, { title: 'Filling', width: 1000, height: 600 });
  const { value } = await scenario(
    async ({ require: load, waitFor }, given) => {
      const { Brisolte } = load(given.engine);
      const capture = new Brisolte();
      const events = [];
      capture.onEvent(() => events.push('replaced'));
      capture.onEvent((event) => events.push(event));
      capture.setOutputDir(given.dir);
      capture.setEncoder('mjpeg');
      capture.startRecord();
      await waitFor('the event', () => events.length > 0);
      const stopped = capture.stopRecord();
      return { events, stopped, file: capture.getSaveFilePath() };
    },
    { dir, engine: ENGINE },
  );
  assert.deepEqual([value.events, value.stopped], [['diskFull'], true]);
  media.assertWhole([value.file]);
  fs.rmSync(value.file);
});

test('an option that is refused while a recording runs is not taken up later', async (t) => {
  const window = await openPattern(t, { title: 'Refused', width: 320, height: 192 });
  const { value } = await scenario(
    ({ require: load }, { engine, dir, handle }) => {
      const { Brisolte } = load(engine);
      const capture = new Brisolte();
      capture.setOutputDir(dir);
      capture.setWindow(handle);
      const first = [capture.startRecord(), capture.setPlayableThroughout(true), capture.stopRecord()];
      const second = [capture.onEvent(() => {}), capture.startRecord(), capture.stopRecord()];
      return { first, second, file: capture.getSaveFilePath() };
    },
    { engine: ENGINE, dir: scratchFolder(), handle: window.handle },
  );
  assert.deepEqual([value.first, value.second], [[true, false, true], [true, true, true]]);
  // The brand of files that were written in fragments.
  assert.ok(!fs.readFileSync(value.file).subarray(0, 64).includes('iso6'));
});

test('a thread that ends while it listens leaves the process alive, and one that nobody stops is not kept by it', async () => {
  const { value } = await scenario(
    async ({ require: load }, { engine }) => {
      const { Worker } = load('node:worker_threads');
      const program = `
        const { Brisolte } = require(${JSON.stringify(engine)});
        const capture = new Brisolte();
        capture.setLogLevel(5);
        capture.onEvent(() => {});
        new Brisolte().onEvent(() => {});`;
      const end = () => new Promise((resolve) => new Worker(program, { eval: true }).once('exit', resolve));
      return [await end(), await end(), await end()];
    },
    { engine: ENGINE },
  );
  assert.deepEqual(value, [0, 0, 0]);
});
