'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { assertRecording, assertSize, assertTimes } = require('./support/check');
const { openPattern } = require('./support/desktop');
const media = require('./support/media');
const { Picture, assertPicture } = require('./support/pattern');
const { record, recordAll } = require('./support/recording');
const { scenario } = require('./support/scenario');
const { scratchFolder } = require('./support/scratch');

const target = (window) => [['setWindow', window.handle]];

for (const [width, height] of [[640, 360], [641, 359], [321, 201]]) { // prettier-ignore
  test(`a window of ${width} by ${height} is recorded as it is shown`, async (t) => {
    const window = await openPattern(t, { title: 'Window', x: 37, y: 53, width, height });
    const recording = await record({ window, settings: target(window) });
    const { video } = assertRecording(recording, { picture: window.picture });
    assertSize(video, { width, height });
  });
}

test('a window with a frame is recorded with its frame', async (t) => {
  const window = await openPattern(t, { title: 'Framed', x: 60, y: 60, framed: true, width: 400, height: 240 });
  const { client, frame } = window.state;
  const recording = await record({ window, settings: target(window) });
  const place = { picture: window.picture, left: frame.left - client.left, top: frame.top - client.top };
  const { video } = assertRecording(recording, place);
  assertSize(video, frame);
});

test('what covers a window is not in its recording', async (t) => {
  const window = await openPattern(t, { title: 'Covered', x: 50, y: 50, below: true });
  await openPattern(t, { title: 'Cover', x: 150, y: 90, width: 420, height: 200, palette: 2 });
  const recording = await record({ window, settings: target(window) });
  assertRecording(recording, { picture: window.picture });
});

test('a window that moves stays in the picture', async (t) => {
  const window = await openPattern(t, { title: 'Moving', x: 20, y: 20, width: 400, height: 240 });
  const recorded = record({ window, settings: target(window), pictures: 120 });
  for (const place of ['200 100', '33 250', '501 301']) {
    await window.paintedMore(30);
    await window.command(`move ${place}`);
  }
  const { video } = assertRecording(await recorded, { picture: window.picture });
  assertSize(video, { width: 400, height: 240 });
});

// Records while the window's size changes to the new one; gives the recording's last frame.
async function lastFrameAfterResize(t, width, height) {
  const window = await openPattern(t, { title: 'Resized', x: 40, y: 40, width: 480, height: 270 });
  const { value } = await scenario(
    async ({ Brisolte, log, paintedMore, require: load }, { dir, handle, files, command }) => {
      const capture = new Brisolte();
      capture.setOutputDir(dir);
      capture.setWindow(handle);
      const started = capture.startRecord();
      await log.line('First Video frame arrived at: ');
      await paintedMore(files.progress, 30);
      load('node:fs').appendFileSync(files.control, `${command}\n`);
      await paintedMore(files.progress, 60);
      return { started, stopped: capture.stopRecord(), file: capture.getSaveFilePath() };
    },
    { dir: scratchFolder(), handle: window.handle, files: window.files, command: `resize ${width} ${height}` },
  );
  assert.deepEqual([value.started, value.stopped], [true, true]);
  const { video, packets } = media.describe(value.file);
  assertSize(video, { width: 480, height: 270 });
  assertTimes(packets);
  return media.frames(value.file, video).at(-1);
}

test('a window that grows is recorded in the first size', async (t) => {
  const frame = await lastFrameAfterResize(t, 700, 400);
  assertPicture(frame, { picture: new Picture(700, 400) });
});

test('a window that shrinks is recorded in the first size', async (t) => {
  const frame = await lastFrameAfterResize(t, 320, 180);
  assertPicture(frame, { picture: new Picture(320, 180) });
});

test('a window that closes ends the frames, not the recording', async (t) => {
  const window = await openPattern(t, { title: 'Closing' });
  const { value } = await scenario(
    async ({ Brisolte, log, paintedMore, waitFor, require: load }, { dir, other, handle, files }) => {
      const capture = new Brisolte();
      capture.setOutputDir(dir);
      capture.setWindow(handle);
      capture.startRecord();
      await log.line('First Video frame arrived at: ');
      await paintedMore(files.progress, 30);
      load('node:fs').appendFileSync(files.control, 'close\n');
      await waitFor('the end of the window', () => !capture.getWindows().some((each) => each.handle === handle));
      const states = [capture.isCapturing(), capture.stopRecord(), capture.isCapturing()];
      const file = capture.getSaveFilePath();
      capture.setOutputDir(other);
      const mark = log.mark();
      return { states, file, again: capture.startRecord(), log: log.since(mark).text };
    },
    { dir: scratchFolder(), other: scratchFolder(), handle: window.handle, files: window.files },
  );
  assert.deepEqual(value.states, [true, true, false]);
  assert.ok(media.frames(value.file).length > 0);
  assert.equal(value.again, false);
  assert.match(value.log, /\[ERROR\] Invalid window handle/);
});

test('what is no window fails', async (t) => {
  const window = await openPattern(t, { title: 'Mover' });
  const handles = [0, 1, -1, 2 ** 40, 2 ** 53, 2 ** 64];
  const plans = handles.map((handle) => ({ window, settings: [['setWindow', handle]] }));
  const { recordings } = await recordAll([...plans, { window, pictures: 20, settings: target(window) }]);
  for (const { started, capturing, log } of recordings.slice(0, -1)) {
    assert.deepEqual([started, capturing], [false, false]);
    assert.match(log, /\[ERROR\] Invalid window handle/);
    assert.match(log, /\[ERROR\] VideoCapture: CreateCaptureItem failed/);
    assert.match(log, /\[ERROR\] Failed to create video capture/);
  }
  assert.equal(recordings.at(-1).stopped, true);
});

const HIDDEN = 'Warning: Target window is not visible';
const MINIMIZED = 'Warning: Target window is minimized';

for (const { name, commands, warnings } of [
  { name: 'hidden', commands: ['hide'], warnings: [HIDDEN] },
  { name: 'minimized', commands: ['minimize'], warnings: [MINIMIZED] },
  { name: 'hidden and minimized', commands: ['minimize', 'hide'], warnings: [HIDDEN, MINIMIZED] },
]) {
  test(`a ${name} window is brought back and recorded`, async (t) => {
    const window = await openPattern(t, { title: 'Brought back', x: 70, y: 45, width: 400, height: 240 });
    const { picture } = window;
    for (const command of commands) {
      await window.command(command);
    }
    const recording = await record({ window, settings: target(window) });
    assert.deepEqual(recording.log.messages('WARNING'), warnings);
    assertRecording(recording, { picture });
  });
}
