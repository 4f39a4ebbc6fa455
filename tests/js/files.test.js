'use strict';

const assert = require('node:assert/strict');
const { spawn } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { assertRecording } = require('./support/check');
const { openPattern, programs } = require('./support/desktop');
const media = require('./support/media');
const { assertAdvances, assertPicture, readNumber } = require('./support/pattern');
const { scenario } = require('./support/scenario');
const { fillDisk, namesOfTheNextSeconds, readOnlyFolder, scratchFile, scratchFolder, smallDisk } = require('./support/scratch');
const { waitFor } = require('./support/wait');

const SMALL = { x: 30, y: 30, width: 320, height: 192 };

// Tries to record into `dir`, then makes a good recording into `good` with the same instance. What startRecord throws
// comes back as its message.
async function tryThenRecord({ Brisolte, log, painted, paintedMore, require: load }, given) {
  const { dir, good, handle, progress, spoil, mode } = given;
  const attempt = (call) => {
    try {
      return call();
    } catch (error) {
      return `${error.constructor.name}: ${error.message}`;
    }
  };
  const capture = new Brisolte();
  const accepted = capture.setOutputDir(dir);
  if (spoil) {
    new Function('require', 'dir', spoil)(load, dir);
  }
  capture.setWindow(handle);
  if (mode !== undefined) {
    capture.setMode(mode);
  }
  const started = attempt(() => capture.startRecord());
  const first = { accepted, started, capturing: capture.isCapturing(), log: log.since().text };
  if (started === true) {
    await log.line('First Video frame arrived at: ');
    await paintedMore(progress, 20);
    first.stopped = attempt(() => capture.stopRecord());
    first.file = capture.getSaveFilePath();
  }
  capture.setOutputDir(good);
  capture.setMode(1);
  const mark = log.mark();
  const before = painted(progress);
  const second = { started: attempt(() => capture.startRecord()) };
  await log.line('First Video frame arrived at: ', mark);
  await paintedMore(progress, 30);
  second.stopped = capture.stopRecord();
  return { first, second: { ...second, file: capture.getSaveFilePath(), painted: [before, painted(progress)] } };
}

async function tryFolder(t, dir, given = {}) {
  const window = await openPattern(t, { title: 'Written', ...SMALL });
  const target = { dir, good: scratchFolder(), handle: window.handle, progress: window.progress };
  const { value, log } = await scenario(tryThenRecord, { ...target, ...given });
  assert.deepEqual([value.second.started, value.second.stopped], [true, true]);
  assertRecording(value.second, { picture: window.picture });
  return { ...value.first, all: log };
}

const count = (text, part) => text.split(part).length - 1;

test('a read-only directory fails', async (t) => {
  const { accepted, started, capturing, log } = await tryFolder(t, readOnlyFolder(t));
  assert.deepEqual([accepted, started, capturing], [true, false, false]);
  assert.equal(count(log, '[ERROR] Cannot write to output file: '), 2, log);
  assert.match(log, /\[ERROR\] Failed to create video capture/);
});

test('an encoder that cannot start leaves startRecord with the error of the held lock', async (t) => {
  const { started, capturing, log } = await tryFolder(t, readOnlyFolder(t), { mode: -1 });
  assert.equal(started, 'Error: resource deadlock would occur');
  assert.equal(capturing, false);
  assert.match(log, /\[ERROR\] FFmpegEncoder: Not initialized before starting/);
  assert.match(log, /\[ERROR\] Failed to start encoder/);
});

test('a directory removed after it was set is made again', async (t) => {
  const dir = path.join(scratchFolder(), 'one', 'two');
  fs.mkdirSync(dir, { recursive: true });
  const spoil = "require('node:fs').rmSync(require('node:path').dirname(dir), { recursive: true });";
  const { accepted, started, stopped, file, log } = await tryFolder(t, dir, { spoil });
  assert.deepEqual([accepted, started, stopped], [true, true, true]);
  assert.match(log, /\[INFO\] Output directory created successfully/);
  assert.ok(media.frames(file).length > 0);
});

test('a directory replaced by a file fails', async (t) => {
  const dir = scratchFolder();
  const spoil = "const fs = require('node:fs'); fs.rmdirSync(dir); fs.writeFileSync(dir, 'x');";
  const { accepted, started, capturing, log } = await tryFolder(t, dir, { spoil });
  assert.deepEqual([accepted, started, capturing], [true, false, false]);
  assert.equal(count(log, '[ERROR] Cannot write to output file: '), 2, log);
  assert.equal(fs.readFileSync(dir, 'utf8'), 'x');
});

test('a parent replaced by a file is an error of the file system', async (t) => {
  const parent = scratchFolder();
  const dir = path.join(parent, 'inner');
  fs.mkdirSync(dir);
  const spoil =
    "const fs = require('node:fs'); const up = require('node:path').dirname(dir); fs.rmdirSync(dir); fs.rmdirSync(up); fs.writeFileSync(up, 'x');";
  const { started, capturing } = await tryFolder(t, dir, { spoil });
  assert.match(String(started), /^Error: .*(create_directories|create directories)/);
  assert.equal(capturing, false);
});

test('an output file that another process holds fails', async (t) => {
  const dir = scratchFolder();
  const ready = scratchFile('held');
  const holder = spawn(programs.hold, [ready, ...namesOfTheNextSeconds(dir, 40)], { stdio: 'ignore' });
  const ended = new Promise((resolve) => holder.on('exit', resolve));
  await waitFor('the held files', () => fs.existsSync(ready));
  const { accepted, started, capturing, log } = await tryFolder(t, dir);
  fs.rmSync(ready);
  assert.equal(await ended, 0);
  assert.deepEqual([accepted, started, capturing], [true, false, false]);
  assert.equal(count(log, '[ERROR] Cannot write to output file: '), 2, log);
});

// An AVI file that breaks off shows the picture, moving, in all frames but the last.
function assertBeginning(file, picture) {
  const shown = media.frames(file, media.describe(file).video, { whole: false }).slice(0, -1);
  assert.ok(shown.length >= 3, `${shown.length} frames`);
  shown.forEach((frame) => assertPicture(frame, { picture }));
  assertAdvances(shown.map((frame) => readNumber(frame, { picture })));
}

for (const { encoder, room } of [
  { encoder: 'libx264', room: 100_000 },
  { encoder: 'prores_ks', room: 230_000 },
  { encoder: 'libvpx', room: 100_000 },
  { encoder: 'mjpeg', room: 200_000 },
]) {
  test(`a disk that fills up completes the file of ${encoder} while the recording still runs`, async (t) => {
    const window = await openPattern(t, { title: 'Full disk', ...SMALL, width: 640, height: 360 });
    const disk = smallDisk(t);
    fillDisk(disk, room);
    const [kept, keptLater] = [scratchFile('kept'), scratchFile('later')];
    const { value, log } = await scenario(
      async ({ Brisolte, log: live, require: load }, given) => {
        const fs = load('node:fs');
        const capture = new Brisolte();
        capture.setOutputDir(given.dir);
        capture.setWindow(given.handle);
        capture.setEncoder(given.encoder);
        const answers = [capture.startRecord()];
        await live.line('write frame:  Stream: 0, Type: Video');
        fs.copyFileSync(capture.getSaveFilePath(), given.kept);
        answers.push(capture.isCapturing(), capture.stopRecord(), capture.isCapturing());
        fs.copyFileSync(capture.getSaveFilePath(), given.keptLater);
        return answers;
      },
      { dir: disk, encoder, kept, keptLater, handle: window.handle },
    );
    assert.deepEqual(value, [true, true, true, false], log.text);
    assert.deepEqual(log.errors, []);
    assert.equal(count(log.text, '[WARNING] FFmpegEncoder: The disk is nearly full'), 1);
    assert.ok(log.has('INFO', 'FFmpegEncoder: Trailer written successfully, output file closed'));
    media.assertWhole([kept]);
    assert.ok(fs.readFileSync(kept).equals(fs.readFileSync(keptLater)), 'nothing is written after that');
    const shown = media.frames(kept);
    assert.ok(shown.length >= 3, `${shown.length} frames`);
    shown.forEach((frame) => assertPicture(frame, { picture: window.picture, exact: false, tolerance: 20 }));
  });
}

test('a disk that another fills at once ends the writing, not the process', async (t) => {
  const window = await openPattern(t, { title: 'Full disk', ...SMALL, width: 640, height: 360 });
  const kept = scratchFile('avi');
  const { value, log } = await scenario(
    async ({ Brisolte, log: live, painted, paintedMore, require: load, supportFolder, waitFor }, given) => {
      const fs = load('node:fs');
      const { fillDisk } = load(`${supportFolder}/scratch`);
      const capture = new Brisolte();
      capture.setOutputDir(given.dir);
      capture.setWindow(given.handle);
      capture.setEncoder('mjpeg');
      const answers = [capture.startRecord()];
      await waitFor('some of the file', () => fs.statSync(capture.getSaveFilePath()).size > 50_000);
      const filler = fillDisk(given.dir);
      await live.line('write frame:  Stream: 0, Type: Video');
      answers.push(capture.isCapturing(), capture.stopRecord(), capture.isCapturing());
      const errors = live.since().errors;
      fs.rmSync(filler);
      fs.copyFileSync(capture.getSaveFilePath(), given.kept);
      fs.rmSync(capture.getSaveFilePath());

      const mark = live.mark();
      const before = painted(given.progress);
      capture.setEncoder('libx264');
      answers.push(capture.startRecord());
      await live.line('First Video frame arrived at: ', mark);
      await paintedMore(given.progress, 20);
      answers.push(capture.stopRecord());
      return { answers, errors, file: capture.getSaveFilePath(), painted: [before, painted(given.progress)] };
    },
    { dir: smallDisk(t), kept, handle: window.handle, progress: window.progress },
  );
  assert.deepEqual(value.answers, [true, true, true, false, true, true], log.text);
  // What is left of the block in which the file ends may have room for the index.
  if (value.errors.length > 0) {
    assert.deepEqual(value.errors, ['FFmpegEncoder: Failed to write trailer!!!!!']);
  } else {
    media.assertWhole([kept]);
  }
  assertBeginning(kept, window.picture);
  assertRecording(value, { picture: window.picture });
});

test('a disk without any room fails or records nothing, and the process lives', async (t) => {
  const window = await openPattern(t, { title: 'No room', ...SMALL });
  const disk = smallDisk(t);
  fillDisk(disk);
  const { value } = await scenario(
    async ({ Brisolte, paintedMore }, given) => {
      const capture = new Brisolte();
      capture.setOutputDir(given.dir);
      capture.setWindow(given.handle);
      const started = capture.startRecord();
      await paintedMore(given.progress, 30);
      return [started, capture.stopRecord(), capture.isCapturing()];
    },
    { dir: disk, handle: window.handle, progress: window.progress },
  );
  assert.equal(value[1], value[0], 'what was started can be stopped');
  assert.equal(value[2], false);
});
