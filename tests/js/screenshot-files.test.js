'use strict';

const assert = require('node:assert/strict');
const { spawn } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { programs } = require('./support/desktop');
const { scenario } = require('./support/scenario');
const { readPng, takeAll } = require('./support/screenshot');
const { readOnlyFolder, scratchDir, scratchFile, scratchFolder, smallDisk } = require('./support/scratch');
const { waitFor } = require('./support/wait');

const OPENING = 'Failed to initialize stream from filename: ';
const REGION = [['setRegion', { left: 0, top: 0, width: 40, height: 30 }]];

/** Tries to take screenshots into these files, one after the other. */
const takeInto = (files) => takeAll(files.map((file) => ({ file, settings: REGION })));

/** The file could not be opened, for this reason. */
function assertNotOpened({ answer, errors }, reason) {
  assert.equal(answer, false);
  assert.ok(errors[0].startsWith(`${OPENING}HRESULT: ${reason}`), errors.join('\n'));
  assert.equal(errors.at(-1), 'Failed to save frame to file');
}

function assertIsPicture(file) {
  const { width, height } = readPng(file);
  assert.deepEqual([width, height], [40, 30]);
}

test('a file may have any name, and nothing else is left beside it', async () => {
  const folder = scratchFolder();
  const names = ['plain.png', 'no ending', 'ünïcödé.png', '漢字 かな.png', '🎥 😀.png', "quote' and % and #.png", '.png', 'a.jpg'];
  const screenshots = await takeInto(names.map((name) => path.join(folder, name)));
  screenshots.forEach(({ answer, file }) => {
    assert.equal(answer, true, file);
    assertIsPicture(file);
  });
  assert.deepEqual(fs.readdirSync(folder).sort(), [...names].sort());
});

test('a relative path begins at the current directory, and slashes are as good as backslashes', async () => {
  const folder = scratchFolder();
  const { value } = await scenario(
    async ({ Brisolte, waitFor: wait }, { dir }) => {
      process.chdir(dir);
      const capture = new Brisolte();
      capture.setRegion({ left: 0, top: 0, width: 40, height: 30 });
      for (const file of ['relative.png', './dotted.png', `${dir.replaceAll('\\', '/')}/slashed.png`]) {
        await wait('a screenshot', () => capture.captureScreenshot(file));
      }
      return true;
    },
    { dir: folder },
  );
  assert.equal(value, true);
  const names = ['dotted.png', 'relative.png', 'slashed.png'];
  assert.deepEqual(fs.readdirSync(folder).sort(), names);
  names.forEach((name) => assertIsPicture(path.join(folder, name)));
});

test('a path may be longer than file functions take without a mark', async () => {
  const parts = Array.from({ length: 5 }, (_, i) => `${'a long name of a folder '.repeat(4)}${i}`);
  const deep = scratchFolder(path.join('long', ...parts));
  assert.ok(deep.length > 300);
  // The place is short enough, but no longer name beside it is.
  const snug = scratchFolder('x'.repeat(250 - scratchDir().length - 1));
  for (const { answer, file, errors } of await takeInto([deep, snug].map((folder) => path.join(folder, 'a.png')))) {
    assert.equal(answer, true, errors.join('\n'));
    assertIsPicture(file);
    assert.deepEqual(fs.readdirSync(path.dirname(file)), ['a.png']);
  }
});

test('an existing file is replaced', async () => {
  const file = scratchFile('png');
  fs.writeFileSync(file, Buffer.alloc(1e6, 'x'));
  const [{ answer }] = await takeInto([file]);
  assert.equal(answer, true);
  assertIsPicture(file);
});

test('a directory that is missing, a directory in the place and a file in the way fail', async () => {
  const folder = scratchFolder();
  const file = path.join(folder, 'file');
  fs.writeFileSync(file, 'x');
  const inner = scratchFolder();
  const places = [path.join(folder, 'missing', 'picture.png'), path.join(file, 'picture.png'), inner, `${inner}\\`];
  const screenshots = await takeInto(places);
  screenshots.forEach((screenshot) => assertNotOpened(screenshot, '0x8007'));
  assert.ok(screenshots[0].errors[0].startsWith(`${OPENING}HRESULT: 0x80070003`), screenshots[0].errors[0]);
  assert.deepEqual(fs.readdirSync(folder), ['file']);
  assert.deepEqual(fs.readdirSync(inner), []);
  assert.equal(fs.readFileSync(file, 'utf8'), 'x');
});

test('names that no file can have fail', async () => {
  const folder = scratchFolder();
  const names = ['', 'NUL', '\\\\.\\pipe\\none', `${folder}\\a\0b.png`, '\0', `${folder}\\wild*card?.png`, '::'];
  (await takeInto(names)).forEach((screenshot) => assertNotOpened(screenshot, '0x8007'));
  // Wine calls a file of too long a name missing, and refuses only to make it.
  const [{ answer, errors }] = await takeInto([`${folder}\\${'x'.repeat(300)}.png`]);
  assert.equal(answer, false);
  assert.match(errors[0], /^Failed to (initialize stream from filename|replace file): HRESULT: 0x8007/);
  assert.deepEqual(fs.readdirSync(folder), []);
});

test('a read-only directory fails', async (t) => {
  const folder = readOnlyFolder(t);
  const file = path.join(folder, 'brisolte-picture.png');
  const before = fs.readdirSync(folder);
  const [screenshot] = await takeInto([file]);
  assertNotOpened(screenshot, '0x8007');
  assert.deepEqual(fs.readdirSync(folder), before);
});

test('a read-only file fails and stays as it was', async () => {
  const folder = scratchFolder();
  const file = path.join(folder, 'picture.png');
  fs.writeFileSync(file, 'x');
  fs.chmodSync(file, 0o444);
  const [{ answer, errors }] = await takeInto([file]);
  assert.equal(answer, false);
  // Who may do everything, as root under Wine, can open the file but still not replace it.
  assert.match(errors[0], /^Failed to (initialize stream from filename|replace file): HRESULT: 0x80070005/);
  assert.equal(errors.at(-1), 'Failed to save frame to file');
  assert.equal(fs.readFileSync(file, 'utf8'), 'x');
  assert.deepEqual(fs.readdirSync(folder), ['picture.png']);
  fs.chmodSync(file, 0o666);
});

test('a file that another process holds fails', async () => {
  const folder = scratchFolder();
  const file = path.join(folder, 'picture.png');
  const ready = scratchFile('held');
  const holder = spawn(programs.hold, [ready, file], { stdio: 'ignore' });
  const ended = new Promise((resolve) => holder.on('exit', resolve));
  await waitFor('the held file', () => fs.existsSync(ready));
  const [screenshot] = await takeInto([file]);
  fs.rmSync(ready);
  assert.equal(await ended, 0);
  assertNotOpened(screenshot, '0x80070020');
  assert.deepEqual(fs.readdirSync(folder).filter((name) => name !== 'picture.png'), []);
});

test('a file that a viewer shows is replaced', async () => {
  const file = scratchFile('png');
  fs.writeFileSync(file, Buffer.alloc(1e6, 'x'));
  const viewer = fs.openSync(file, 'r');
  const [{ answer, errors }] = await takeInto([file]);
  fs.closeSync(viewer);
  assert.equal(answer, true, errors.join('\n'));
  assertIsPicture(file);
});

// Fills a disk up, tries to replace an old file and to make a new one, makes room and tries again.
async function takeOnFullDisk({ Brisolte, log, waitFor: wait, require: load }, { dir }) {
  const files = load('node:fs');
  const fill = (name, size) => {
    const filler = files.openSync(`${dir}\\${name}`, 'w');
    try {
      for (;;) {
        files.writeSync(filler, Buffer.alloc(size, 1));
      }
    } catch (error) {
      if (error.code !== 'ENOSPC') {
        throw error;
      }
    }
    files.closeSync(filler);
  };
  files.writeFileSync(`${dir}\\old.png`, 'old');
  fill('filler-1', 65536);
  fill('filler-2', 1);
  const capture = new Brisolte();
  capture.setMonitor(0);
  const failed = [];
  for (const name of ['old.png', 'new.png']) {
    const attempt = () => {
      const mark = log.mark();
      const answer = capture.captureScreenshot(`${dir}\\${name}`);
      const { errors } = log.since(mark);
      return errors[0] !== 'Failed to get frame' && { answer, errors };
    };
    failed.push(await wait('a screenshot that has a frame', attempt));
  }
  const left = files.readdirSync(dir).filter((name) => !name.startsWith('filler'));
  const old = files.readFileSync(`${dir}\\old.png`, 'utf8');
  files.rmSync(`${dir}\\filler-1`);
  files.rmSync(`${dir}\\filler-2`);
  await wait('a screenshot', () => capture.captureScreenshot(`${dir}\\old.png`));
  return { failed, left, old };
}

test('a full disk fails with a reason, keeps what was there and leaves nothing new', async (t) => {
  const dir = smallDisk(t);
  const { value } = await scenario(takeOnFullDisk, { dir });
  for (const { answer, errors } of value.failed) {
    assert.equal(answer, false);
    assert.match(errors[0], /^Failed to [a-z PNG]+: HRESULT: 0x[0-9a-f]+/);
    assert.equal(errors.at(-1), 'Failed to save frame to file');
  }
  assert.deepEqual([value.left, value.old], [['old.png'], 'old']);
  assert.ok(readPng(path.join(dir, 'old.png')).width > 0);
});
