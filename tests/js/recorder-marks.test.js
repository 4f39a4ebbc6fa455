'use strict';

// What Windows draws that is not the target's: the mouse pointer, and its border around what is recorded. The stand-in draws them
// when it is told to: a magenta square in the middle, and a yellow frame.

const assert = require('node:assert/strict');
const { once } = require('node:events');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { openPattern } = require('./support/desktop');
const { FAULTS_FILE } = require('./support/faults');
const media = require('./support/media');
const { packageFolder } = require('./support/package');
const { assertColour, QUARTERS, WHITE } = require('./support/pattern');
const { scratchFolder } = require('./support/scratch');

const { Recorder } = require(path.join(packageFolder, 'recorder.js'));

const MAGENTA = [255, 0, 255];
const YELLOW = [255, 255, 0];
// Of the pointer's left upper quarter, and of the border inside the ruler's first square.
const POINTER = { left: 154, top: 90, right: 158, bottom: 94 };
const BORDER = { left: 6, top: 1, right: 12, bottom: 4 };
const TOLERANCE = 40;

/** Records a window while the service draws; gives the last picture, and the warnings. */
async function recorded(t, options, refusals = []) {
  const window = await openPattern(t, { title: 'Marked', x: 30, y: 30, width: 320, height: 192 });
  fs.writeFileSync(FAULTS_FILE, ['DrawCursor 1', 'DrawBorder 1', ...refusals, ''].join('\r\n'));
  t.after(() => fs.rmSync(FAULTS_FILE, { force: true }));
  const recorder = new Recorder({ window: window.handle, directory: scratchFolder(), ...options });
  t.after(() => recorder.close());
  const warnings = [];
  recorder.on('warning', (warning) => warnings.push(warning));
  await recorder.start();
  await once(recorder, 'progress');
  const { file } = await recorder.stop();
  await recorder.close();
  return { frame: media.frames(file).at(-1), warnings };
}

const RED = QUARTERS[0];

for (const [options, pointer, border] of [
  [{}, MAGENTA, YELLOW],
  [{ cursor: false }, RED, YELLOW],
  [{ border: false }, MAGENTA, WHITE],
  [{ cursor: false, border: false }, RED, WHITE],
]) {
  test(`the pointer and the border are recorded unless they shall be left out: ${JSON.stringify(options)}`, async (t) => {
    const { frame, warnings } = await recorded(t, options);
    assertColour(frame, POINTER, pointer, TOLERANCE);
    assertColour(frame, BORDER, border, TOLERANCE);
    assert.deepEqual(warnings, []);
  });
}

for (const [how, refusals] of Object.entries({
  'has no way': ['QuerySession2 0x80004002', 'QuerySession3 0x80004002'],
  refuses: ['put_IsCursorCaptureEnabled 0x80070005', 'put_IsBorderRequired 0x80070005'],
})) {
  test(`a system that ${how} is told as a warning, and the recording goes on`, async (t) => {
    const { frame, warnings } = await recorded(t, { cursor: false, border: false }, refusals);
    assertColour(frame, POINTER, MAGENTA, TOLERANCE);
    assertColour(frame, BORDER, YELLOW, TOLERANCE);
    assert.deepEqual(warnings.map(({ code }) => code), ['cursorStays', 'borderStays']);
    assert.match(warnings[0].message, /Windows 10 version 2004/);
    assert.match(warnings[1].message, /Windows 11/);
  });
}
