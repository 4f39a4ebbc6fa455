'use strict';

// Wine's sink writer takes streams but cannot encode. What comes before and after that is what users get.

const assert = require('node:assert/strict');
const path = require('node:path');
const { test } = require('node:test');
const { assertRecording } = require('./support/check');
const { openPattern } = require('./support/desktop');
const { Log } = require('./support/log');
const { recordAll } = require('./support/recording');
const { scenario } = require('./support/scenario');
const { scratchFolder } = require('./support/scratch');

const SIZE = { width: 320, height: 192 };
const NOT_IMPLEMENTED = 'HRESULT: 0x80004001';

// The lines up to the failure; numbers that differ from run to run are left out.
const WRITER_LINES = [
  'Initializing MFEncoder writer...',
  'MFEncoder writer initialized successfully',
  'Creating DXGI device manager...',
  'DXGI device manager created with reset token: ',
  'Resetting device with token: ',
  'Device reset successful',
];

function assertFailedStart({ started, capturing, log, file }, failure) {
  assert.deepEqual([started, capturing], [false, false], log);
  assert.equal(path.extname(file), '.mp4');
  const { errors, messages } = linesOf(log);
  const first = messages.indexOf(WRITER_LINES[0]);
  WRITER_LINES.forEach((line, i) => assert.ok(messages[first + i]?.startsWith(line), log));
  // Once for the engine's own device, once more for the capture's.
  assert.equal(messages.filter((line) => line === 'Device reset successful').length, 2, log);
  assert.match(errors[0], failure);
  assert.deepEqual(errors.slice(1), ['VideoCapture: ConfigureVideoStream failed', 'Failed to create video capture']);
}

function linesOf(text) {
  const log = new Log(text);
  return { errors: log.errors, messages: log.messages('INFO') };
}

test('a sink writer that cannot encode fails the start, and the same instance records with libx264', async (t) => {
  const window = await openPattern(t, { title: 'Sink writer', ...SIZE });
  // Each in a folder of its own: Wine's sink writer keeps the file of a stream it refused open for good.
  const plan = (name) => ({ window, pictures: 40, settings: [['setWindow', window.handle], ['setEncoder', name]] }); // prettier-ignore
  const names = ['mf_h264', 'libx264', 'mf_h264', 'mf_hevc', 'libx264'];
  const { recordings } = await recordAll(names.map(plan));
  const refused = new RegExp(`^Failed to set input media type with device manager: ${NOT_IMPLEMENTED}`);
  assertFailedStart(recordings[0], refused);
  assert.match(recordings[0].log, /^ \(HRESULT: 0x80004001\)\r?$/m);
  assertFailedStart(recordings[2], refused);
  // Wine does not know HEVC even as a stream.
  assertFailedStart(recordings[3], /^Failed to add video stream: HRESULT: 0x/);
  for (const i of [1, 4]) {
    assert.equal(recordings[i].stopped, true, recordings[i].log);
    assertRecording(recordings[i], { picture: window.picture, exact: false });
    assert.deepEqual(linesOf(recordings[i].log).errors, []);
  }
});

test('sound alone that the sink writer cannot take fails the start', async () => {
  const { value } = await scenario(
    ({ Brisolte, log }, { dir }) => {
      const capture = new Brisolte();
      capture.setOutputDir(dir);
      capture.setMode(-1);
      capture.setEncoder('mf_hevc');
      capture.setMicrophoneDevice(capture.getMicrophones()[0].id);
      const mark = log.mark();
      const started = capture.startRecord();
      const outcome = { started, file: capture.getSaveFilePath(), errors: log.since(mark).errors };
      capture.setEncoder('libx264');
      return { ...outcome, after: [capture.startRecord(), capture.stopRecord()] };
    },
    { dir: scratchFolder() },
  );
  assert.equal(value.started, false);
  assert.equal(path.extname(value.file), '.m4a');
  assert.ok(value.errors[0].startsWith(`Failed to set input media type: ${NOT_IMPLEMENTED}`), value.errors[0]);
  assert.equal(value.errors[1], 'Failed to create microphone audio stream');
  assert.equal(value.errors.at(-1), 'Failed to create video capture');
  assert.deepEqual(value.after, [true, true]);
});
