'use strict';

const assert = require('node:assert/strict');
const { once } = require('node:events');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { waitFor } = require('../js/support/wait');
const { isThere } = require('../js/support/processes');
const { folderOf, recorderOf } = require('./support/recorder');

/** What the stand-in for the module was told to record. */
const settingsOf = (named) => JSON.parse(named('log').find(({ text }) => text.startsWith('settings: ')).text.slice(10));

test('a recording is started, tells of itself and is stopped', async (t) => {
  const { recorder, events, named } = recorderOf(t, {});
  assert.equal(recorder.pid, undefined);
  await recorder.start();
  assert.ok(isThere(recorder.pid) && recorder.pid !== process.pid);
  assert.equal(recorder.recording, true);
  const [progress] = await once(recorder, 'progress');
  const [later] = await once(recorder, 'progress');
  assert.ok(later.seconds > progress.seconds && later.bytes > progress.bytes);
  assert.ok(later.freeBytes > 0);
  const result = await recorder.stop();
  assert.equal(recorder.recording, false);
  const { size } = fs.statSync(result.file);
  const { file, seconds } = result;
  assert.deepEqual(result, { file, files: [file], seconds, bytes: size, reason: 'requested' });
  assert.ok(result.seconds >= later.seconds);
  assert.match(path.basename(file), /^Qorvex-\d{4}(-\d\d){5}\.mp4$/);
  assert.deepEqual(named('start'), [{ file }]);
  assert.deepEqual(named('stop'), [result]);
  assert.deepEqual(events.at(-1), ['stop', result]);
  assert.deepEqual(await recorder.stop(), result);
});

test('its log is told line by line', async (t) => {
  const { recorder, named } = recorderOf(t, {});
  await recorder.start();
  await recorder.stop();
  await waitFor("FFmpeg's line", () => named('log').some(({ source }) => source === 'ffmpeg'));
  const [line] = named('log').filter(({ text }) => text.startsWith('FFmpegEncoder'));
  assert.deepEqual([line.level, line.source, line.text], ['info', 'brisolte', 'FFmpegEncoder: Trailer written successfully, output file closed']);
  assert.ok(Math.abs(line.time - Date.now()) < 60_000);
});

test('all options reach the module', async (t) => {
  const options = { window: 'Notes', encoder: 'mjpeg', frameRate: 12, bitrate: 200_000, audioBitrate: 64_000, microphone: 'default', safeFile: false, cursor: false, border: false };
  const more = { scale: { width: 640, height: 360 }, encoderOptions: { huffman: 'optimal' } };
  const { recorder, named } = recorderOf(t, { ...options, ...more });
  await recorder.start();
  const { directory, ...settings } = settingsOf(named);
  assert.ok(fs.existsSync(directory));
  const numbers = { frameRate: 12, bitrate: 200_000, audioBitrate: 64_000 };
  assert.deepEqual(settings, { window: 42, encoder: 'mjpeg', microphone: 'mic-2', speaker: '', throughout: false, sound: ['mp3', 64_000], cursor: false, border: false, largest: more.scale, encoderOptions: more.encoderOptions, ...numbers });
});

test('what the system cannot leave out is told once, however many segments find it so', async (t) => {
  const { recorder, named } = recorderOf(t, { encoder: 'stays', cursor: false, border: false, segments: { seconds: 1 } });
  await recorder.start();
  await once(recorder, 'segment');
  await recorder.stop();
  const warnings = named('warning');
  assert.deepEqual(warnings.map(({ code }) => code), ['cursorStays', 'borderStays']);
  assert.match(warnings[0].message, /^The mouse pointer is in the recording: .* Windows 10 version 2004/);
  assert.match(warnings[1].message, /^Windows may draw its border .* Windows 11/);
});

test('a region is recorded on the monitor that has most of it', async (t) => {
  const region = { left: 1200, top: 10, width: 400, height: 300 };
  const { recorder, named } = recorderOf(t, { region });
  await recorder.start();
  assert.deepEqual([settingsOf(named).monitor, settingsOf(named).region], [1, region]);
});

test('what is not there is named, and what there is', async (t) => {
  const missing = [
    [{ window: 'Nonesuch' }, 'There is no window with the title "Nonesuch"; there are: "Notes".'],
    [{ monitor: 'X' }, 'There is no monitor X; there are: \\\\.\\DISPLAY1, \\\\.\\DISPLAY2.'],
    [{ microphone: 'X' }, 'There is no microphone with the id "X"; there are: "mic-1" (Line in), "mic-2" (Headset).'],
    [{ speaker: 'default' }, 'There is no speaker; there is none.'],
  ];
  for (const [options, message] of missing) {
    const { recorder } = recorderOf(t, options);
    await assert.rejects(recorder.start(), { name: 'RecorderError', code: 'ERR_RECORDER_NOT_FOUND', message });
  }
});

test('a recording gets the name of the file once it is complete', async (t) => {
  const file = path.join(folderOf(t), 'Gespräch.mp4');
  const { recorder, named } = recorderOf(t, { directory: undefined, file });
  await recorder.start();
  assert.ok(!fs.existsSync(file));
  assert.ok(fs.existsSync(named('start')[0].file));
  assert.equal((await recorder.stop()).file, file);
  assert.deepEqual(fs.readdirSync(path.dirname(file)), ['Gespräch.mp4']);
});

test('a file that exists is refused, unless it may be overwritten', async (t) => {
  const file = path.join(folderOf(t), 'talk.mp4');
  fs.writeFileSync(file, 'old');
  const refused = recorderOf(t, { directory: undefined, file });
  const message = `${file} exists. Give another file, or overwrite: true.`;
  await assert.rejects(refused.recorder.start(), { code: 'ERR_RECORDER_EXISTS', message });
  assert.equal(fs.readFileSync(file, 'utf8'), 'old');
  const { recorder } = recorderOf(t, { directory: undefined, file, overwrite: true });
  await recorder.start();
  assert.equal(fs.readFileSync(file, 'utf8'), 'old');
  await recorder.stop();
  assert.notEqual(fs.readFileSync(file, 'utf8'), 'old');
});

test('a recording keeps its own name when its file came into being meanwhile', async (t) => {
  const file = path.join(folderOf(t), 'talk.mp4');
  const { recorder } = recorderOf(t, { directory: undefined, file });
  await recorder.start();
  fs.writeFileSync(file, 'of somebody else');
  const result = await recorder.stop();
  assert.match(path.basename(result.file), /^Qorvex-/);
  assert.equal(result.problem, `${file} exists`);
  assert.equal(fs.readFileSync(file, 'utf8'), 'of somebody else');
});

test('a recorder records again and again, with a new file each time', async (t) => {
  const { recorder } = recorderOf(t, {});
  const files = new Set();
  const processes = new Set();
  for (let i = 0; i < 3; i += 1) {
    await recorder.start();
    processes.add(recorder.pid);
    files.add((await recorder.stop()).file);
  }
  assert.deepEqual([files.size, processes.size], [3, 1]);
  files.forEach((file) => assert.ok(fs.existsSync(file)));
});

test('what cannot be done now is refused', async (t) => {
  const { recorder } = recorderOf(t, {});
  await assert.rejects(recorder.stop(), { code: 'ERR_RECORDER_STATE', message: 'Nothing was recorded. Call start first.' });
  const starting = recorder.start();
  await assert.rejects(recorder.start(), { code: 'ERR_RECORDER_STATE' });
  await starting;
  await assert.rejects(recorder.start(), { code: 'ERR_RECORDER_STATE' });
  assert.equal((await recorder.stop()).reason, 'requested');
});

test('a stop while it starts stops it once it has started', async (t) => {
  const { recorder, named } = recorderOf(t, {});
  const starting = recorder.start();
  const { reason, file } = await recorder.stop();
  await starting;
  assert.equal(reason, 'requested');
  assert.ok(fs.existsSync(file));
  assert.equal(named('stop').length, 1);
});

test('its process ends when it is closed, and the recording is complete', async (t) => {
  const { recorder, named } = recorderOf(t, {});
  await recorder.start();
  const { pid } = recorder;
  await recorder.close();
  assert.equal(isThere(pid), false);
  assert.equal(recorder.pid, undefined);
  assert.equal(named('stop')[0].reason, 'requested');
  await recorder.start();
  assert.notEqual(recorder.pid, pid);
});

test('who closes it while it is closed waits for the same end', async (t) => {
  const { recorder } = recorderOf(t, {});
  await recorder.start();
  const { pid } = recorder;
  const there = await Promise.all([0, 1].map(() => recorder.close().then(() => isThere(pid))));
  assert.deepEqual(there, [false, false]);
});

test('it is closed at the end of the block that uses it', { skip: !Symbol.asyncDispose }, async (t) => {
  const { recorder, named } = recorderOf(t, {});
  await recorder.start();
  const { pid } = recorder;
  await recorder[Symbol.asyncDispose]();
  assert.equal(isThere(pid), false);
  assert.equal(named('stop').length, 1);
});

test('its process ends when nothing was asked of it for some seconds', async (t) => {
  const { recorder } = recorderOf(t, {});
  await recorder.start();
  await recorder.stop();
  const { pid } = recorder;
  await waitFor('the end of the process', () => !isThere(pid), 20_000);
  assert.equal(recorder.pid, undefined);
});
