'use strict';

// Where recordings go: paths of every form, and the same path twice.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { assertRecording } = require('./support/check');
const { openPattern } = require('./support/desktop');
const { record, recordAll } = require('./support/recording');
const { scenario } = require('./support/scenario');
const { namesOfTheNextSeconds, scratchFile, scratchFolder } = require('./support/scratch');

const SMALL = { x: 30, y: 30, width: 320, height: 192 };

// Records into a relative folder and goes elsewhere meanwhile.
async function recordAndLeave({ Brisolte, log, painted, paintedMore }, { from, to, encoders, handle, progress }) {
  const capture = new Brisolte();
  capture.setOutputDir('.');
  capture.setWindow(handle);
  const recordings = [];
  for (const encoder of encoders) {
    process.chdir(from);
    capture.setEncoder(encoder);
    const mark = log.mark();
    const before = painted(progress);
    const started = capture.startRecord();
    await log.line('First Video frame arrived at: ', mark);
    process.chdir(to);
    await paintedMore(progress, 30);
    const stopped = capture.stopRecord();
    const { errors } = log.since(mark);
    recordings.push({ started, stopped, errors, file: capture.getSaveFilePath(), painted: [before, painted(progress)] });
  }
  return recordings;
}

test('a recording into a relative folder is whole although the current directory changes', async (t) => {
  const window = await openPattern(t, { title: 'Left', ...SMALL });
  const [from, to] = [scratchFolder(), scratchFolder()];
  const encoders = ['libx264', 'prores_ks'];
  const { value } = await scenario(recordAndLeave, { from, to, encoders, handle: window.handle, progress: window.progress });
  assert.equal(value.length, encoders.length);
  for (const { started, stopped, errors, file, painted } of value) {
    assert.deepEqual([started, stopped, errors], [true, true, []]);
    assert.match(file, /^\.\\Qorvex-[-\d]+\.(mp4|mov)$/);
    assertRecording({ file: path.join(from, file), painted }, { picture: window.picture, exact: false });
  }
  assert.deepEqual(fs.readdirSync(to), []);
});

// `space` are the colours of a file that does not say which it has.
for (const { encoder, space } of [{ encoder: 'libx264' }, { encoder: 'mf_h264', space: 'bt709' }]) {
  test(`every folder that setOutputDir takes can be recorded into with ${encoder}`, async (t) => {
    const window = await openPattern(t, { title: 'Forms', ...SMALL });
    const folder = scratchFolder();
    const long = Array.from({ length: 4 }, (_, i) => `${'a long name of a folder '.repeat(4)}${i}`);
    const within = (...names) => path.join(folder, ...names);
    // A folder of its own for each, because two recordings may begin in the same second.
    const forms = [
      { place: within('plain', ...long), form: (place) => place },
      { place: within('ended', ...long), form: (place) => `${place}\\` },
      { place: within('marked long', ...long), form: (place) => `\\\\?\\${place}` },
      // Only the name of the recording makes this one too long.
      { place: within('x'.repeat(240 - folder.length)), form: (place) => place },
      { place: within('marked'), form: (place) => `\\\\?\\${place}` },
      { place: within('marked and ended'), form: (place) => `\\\\?\\${place}\\` },
      { place: within('blank'), form: (place) => `${place} ` },
      { place: within('dots'), form: (place) => `${place}...` },
      { place: within('up'), form: () => `${folder}\\.\\x\\..\\up` },
      { place: within('shared'), form: (place) => `\\\\localhost\\C$${place.slice(2)}` },
      { place: within('shared and marked'), form: (place) => `\\\\?\\UNC\\localhost\\C$${place.slice(2)}` },
    ];
    assert.ok(forms[0].place.length > 300 && forms[3].place.length < 248);
    forms.forEach(({ place }) => fs.mkdirSync(place, { recursive: true }));
    const dirs = forms.map(({ place, form }) => form(place));
    const plans = dirs.map((dir) => ({ window, dir, pictures: 20, settings: [['setWindow', window.handle], ['setEncoder', encoder]] }));
    const { recordings, log } = await recordAll(plans);
    recordings.forEach(({ started, stopped, file, painted }, i) => {
      assert.deepEqual([started, stopped], [true, true], `${dirs[i]}\n${log.text}`);
      assert.ok(file.startsWith(`${dirs[i]}\\Qorvex-`), file);
      const found = path.join(forms[i].place, path.win32.basename(file));
      assertRecording({ file: found, painted }, { picture: window.picture, exact: false, space });
    });
    assert.deepEqual(log.errors, []);
  });
}

test('a folder of any form is made again when it is gone', async (t) => {
  const window = await openPattern(t, { title: 'Made again', ...SMALL });
  const folder = scratchFolder();
  const deep = path.join(folder, 'a'.repeat(200), 'b'.repeat(100));
  const { value, log } = await scenario(
    async ({ Brisolte, log: live, require: load }, { dirs, handle }) => {
      const { mkdirSync, rmSync, readdirSync } = load('node:fs');
      const capture = new Brisolte();
      capture.setWindow(handle);
      const made = [];
      for (const dir of dirs) {
        mkdirSync(dir, { recursive: true });
        const accepted = capture.setOutputDir(dir);
        rmSync(load('node:path').dirname(dir), { recursive: true });
        const mark = live.mark();
        const started = capture.startRecord();
        await live.line('First Video frame arrived at: ', mark);
        made.push([accepted, started, capture.stopRecord(), readdirSync(dir).length]);
      }
      return made;
    },
    { dirs: [deep, `\\\\?\\${path.join(folder, 'one', 'two')}`], handle: window.handle },
  );
  assert.deepEqual(value, [
    [true, true, true, 1],
    [true, true, true, 1],
  ]);
  assert.equal(log.messages('INFO').filter((line) => line === 'Output directory created successfully').length, 2);
});

test('setOutputDir takes the root of a disk and of a share', async () => {
  const roots = ['C:', 'C:\\', '\\\\?\\C:\\', '\\\\localhost\\C$', '\\\\localhost\\C$\\', '\\\\?\\UNC\\localhost\\C$', '\\\\?\\UNC\\localhost\\C$\\'];
  const others = ['\\\\localhost\\no such share', '\\\\?\\UNC\\localhost\\no such share', '\\\\?\\Q:\\'];
  const { value } = await scenario(
    ({ Brisolte }, paths) => {
      const capture = new Brisolte();
      return paths.map((text) => capture.setOutputDir(text));
    },
    [...roots, ...others],
  );
  assert.deepEqual(value, [...roots.map(() => true), ...others.map(() => false)]);
});

test('setOutputDir throws when the system cannot tell what is there', async () => {
  // Wine has an error for the first, Windows for the second; each calls the other missing.
  const texts = ['\\\\.\\pipe\\none', 'x'.repeat(70000)];
  const { value } = await scenario(
    ({ Brisolte }, given) => {
      const capture = new Brisolte();
      capture.setOutputDir(given.before);
      const answers = given.texts.map((text) => {
        try {
          return capture.setOutputDir(text);
        } catch (error) {
          return `${error.constructor.name}: ${error.message}`;
        }
      });
      capture.setMode(-1);
      return { answers, recorded: [capture.startRecord(), capture.stopRecord()], file: capture.getSaveFilePath() };
    },
    { texts, before: scratchFolder() },
  );
  const thrown = value.answers.filter((answer) => answer !== false);
  assert.ok(thrown.length > 0, 'each is refused');
  thrown.forEach((answer) => assert.match(String(answer), /^Error: .*status/));
  assert.deepEqual(value.recorded, [true, true]);
});

// Records while `second` says so.
async function recordWhile({ Brisolte, log, painted, paintedMore, waitFor, require: load }, { dir, handle, progress, files }) {
  const fs = load('node:fs');
  const first = new Brisolte();
  first.setOutputDir(dir);
  first.setWindow(handle);
  await waitFor('the second process', () => fs.existsSync(files.ready));
  for (let attempt = 0; attempt < 10; attempt += 1) {
    await waitFor('the beginning of a second', () => Date.now() % 1000 < 100);
    const before = painted(progress);
    const mark = log.mark();
    const started = first.startRecord();
    await log.line('First Video frame arrived at: ', mark);
    await waitFor('the answer of the second process', () => fs.existsSync(files.answer));
    const second = JSON.parse(fs.readFileSync(files.answer, 'utf8'));
    await paintedMore(progress, 40);
    const recording = { started, stopped: first.stopRecord(), file: first.getSaveFilePath(), painted: [before, painted(progress)] };
    fs.rmSync(files.answer);
    if (second.file === recording.file) {
      fs.writeFileSync(files.end, '');
      return { ...recording, second };
    }
    fs.rmSync(recording.file);
  }
  throw new Error('the second process never started in the same second');
}

// Starts as soon as there is a file in the folder.
async function startBeside({ Brisolte, log, waitFor, require: load }, { dir, handle, files }) {
  const fs = load('node:fs');
  const second = new Brisolte();
  second.setOutputDir(dir);
  second.setWindow(handle);
  fs.writeFileSync(files.ready, '');
  for (;;) {
    await waitFor('the file of the first process', () => fs.readdirSync(dir).length > 0 || fs.existsSync(files.end), 80000);
    if (fs.existsSync(files.end)) {
      return;
    }
    const mark = log.mark();
    const started = second.startRecord();
    const answer = { started, file: second.getSaveFilePath(), errors: log.since(mark).errors };
    second.stopRecord();
    if (started) {
      fs.rmSync(answer.file, { force: true });
    }
    fs.writeFileSync(`${files.answer}.new`, JSON.stringify(answer));
    fs.renameSync(`${files.answer}.new`, files.answer);
    await waitFor('the end of the first recording', () => !fs.existsSync(files.answer) || fs.existsSync(files.end));
    await waitFor('an empty folder', () => fs.readdirSync(dir).length === 0 || fs.existsSync(files.end));
  }
}

test('a second recording of the same second and folder is refused, and the first goes on', async (t) => {
  const window = await openPattern(t, { title: 'Same second', ...SMALL });
  const files = { ready: scratchFile('ready'), answer: scratchFile('answer'), end: scratchFile('end') };
  const given = { dir: scratchFolder(), handle: window.handle, progress: window.progress, files };
  const second = scenario(startBeside, given);
  const first = scenario(recordWhile, given).finally(() => fs.writeFileSync(files.end, ''));
  const [{ value }] = await Promise.all([first, second]);
  assert.equal(value.second.started, false);
  const refusals = value.second.errors.filter((line) => line === `Cannot write to output file: ${value.file}`);
  assert.equal(refusals.length, 2, value.second.errors.join('\n'));
  assert.deepEqual([value.started, value.stopped], [true, true]);
  assertRecording(value, { picture: window.picture });
});

test('a second recording of the same second and folder is refused in the same process too', async () => {
  const { value } = await scenario(
    async ({ Brisolte, log, waitFor }, { dir }) => {
      const recorders = [new Brisolte(), new Brisolte()];
      recorders.forEach((recorder) => {
        recorder.setOutputDir(dir);
        recorder.setMode(-1);
      });
      const [first, second] = recorders;
      for (let attempt = 0; attempt < 10; attempt += 1) {
        await waitFor('the beginning of a second', () => Date.now() % 1000 < 100);
        const started = first.startRecord();
        const mark = log.mark();
        let thrown = '';
        try {
          second.startRecord();
        } catch (error) {
          thrown = error.message;
        }
        const outcome = { started, thrown, errors: log.since(mark).errors, stopped: first.stopRecord() };
        second.stopRecord();
        if (first.getSaveFilePath() === second.getSaveFilePath()) {
          return { ...outcome, file: first.getSaveFilePath() };
        }
      }
      throw new Error('the recordings never started in the same second');
    },
    { dir: scratchFolder() },
  );
  assert.deepEqual([value.started, value.stopped], [true, true]);
  assert.deepEqual(value.errors.slice(0, 2), Array(2).fill(`Cannot write to output file: ${value.file}`));
  // Nothing but its encoder could start, which startRecord tells with the error of its lock.
  assert.match(value.thrown, /resource deadlock would occur/);
});

test('a recording takes the place of one of the same second that is complete', async (t) => {
  const window = await openPattern(t, { title: 'In its place', ...SMALL });
  const dir = scratchFolder();
  const names = namesOfTheNextSeconds(dir, 60);
  names.forEach((name) => fs.writeFileSync(name, 'an earlier recording'));
  const recording = await record({ window, dir, pictures: 30, settings: [['setWindow', window.handle]] });
  assert.ok(names.includes(recording.file), recording.file);
  assertRecording(recording, { picture: window.picture });
});
