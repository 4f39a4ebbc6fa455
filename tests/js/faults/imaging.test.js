'use strict';

// Each call of the Windows Imaging Component that writes a screenshot fails.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { openPattern } = require('../support/desktop');
const { ACCESS_DENIED, failingCalls, letImagingFail } = require('../support/faults');
const { assertPixels } = require('../support/pattern');
const { readPng, takeAll } = require('../support/screenshot');
const { scratchFolder } = require('../support/scratch');

const INVALID_POINTER = '0x80004003';

// What is logged for each call, and whether only a region's screenshot makes it.
const FAULTS = [
  { call: 'CreateImagingFactory', text: 'Failed to create WIC factory: ', gives: true },
  { call: 'CreateBitmapFromMemory', text: 'Failed to create bitmap from memory: ', gives: true },
  { call: 'CreateBitmap', text: 'Failed to create crop bitmap: ', region: true, gives: true },
  { call: 'LockBitmap', text: 'Failed to lock bitmap: ', region: true, gives: true },
  { call: 'GetDataPointer', text: 'Failed to get bitmap data pointer: ', region: true, gives: true },
  { call: 'GetStride', text: 'Failed to get bitmap data pointer: ', region: true },
  { call: 'CreateEncoder', text: 'Failed to create PNG encoder: ', gives: true },
  { call: 'CreateStream', text: 'Failed to create stream: ', gives: true },
  { call: 'InitializeFromFilename', text: 'Failed to initialize stream from filename: ' },
  { call: 'InitializeEncoder', text: 'Failed to initialize encoder: ' },
  { call: 'CreateNewFrame', text: 'Failed to create frame: ', gives: true },
  { call: 'InitializeFrame', text: 'Failed to initialize frame: ' },
  { call: 'SetFrameSize', text: 'Failed to set frame size: ' },
  { call: 'SetFramePixelFormat', text: 'Failed to set pixel format: ' },
  { call: 'WriteSource', text: 'Failed to write source: ' },
  { call: 'CommitFrame', text: 'Failed to commit frame: ' },
  { call: 'CommitEncoder', text: 'Failed to commit encoder: ' },
];

const OLD = 'what was there before';

/** A path in a folder of its own, with a file there already or none. */
function place(old) {
  const file = path.join(scratchFolder(), 'picture.png');
  if (old) {
    fs.writeFileSync(file, OLD);
  }
  return file;
}

/** Nothing of a failed screenshot is left: no temporary file either. */
function assertUntouched(file, old, what) {
  assert.deepEqual(fs.readdirSync(path.dirname(file)), old ? ['picture.png'] : [], what);
  assert.ok(!old || fs.readFileSync(file, 'utf8') === OLD, what);
}

/** Takes a screenshot while each call answers `result`, and then a good one. */
async function failEach(t, faults, result, old) {
  letImagingFail(t);
  const window = await openPattern(t, { title: 'Imaging', x: 20, y: 20, width: 320, height: 192 });
  const inWindow = [['setWindow', window.handle]];
  const inRegion = [['setRegion', { left: 20, top: 20, width: 30, height: 20 }]];
  const plans = faults.map(({ call, region }) => ({
    rules: [`${call} ${result} times 1`],
    settings: region ? inRegion : inWindow,
    file: place(old),
  }));
  const screenshots = await takeAll([...plans, { settings: inWindow, file: place(old) }]);
  const good = screenshots.pop();
  assert.deepEqual([good.answer, good.errors], [true, []]);
  assertPixels(readPng(good.file), { picture: window.picture });
  return screenshots;
}

for (const old of [false, true]) {
  test(`each failing step has its text and leaves ${old ? 'the old file as it was' : 'no file'}`, async (t) => {
    assert.deepEqual(FAULTS.map(({ call }) => call).sort(), failingCalls('Imaging').sort());
    const screenshots = await failEach(t, FAULTS, ACCESS_DENIED, old);
    FAULTS.forEach(({ call, text }, i) => {
      const { answer, errors, file } = screenshots[i];
      assert.equal(answer, false, call);
      assert.equal(errors.length, 2, `${call}: ${errors.join('\n')}`);
      assert.ok(errors[0].startsWith(`${text}HRESULT: ${ACCESS_DENIED}`), `${call}: ${errors[0]}`);
      assert.equal(errors[1], 'Failed to save frame to file', call);
      assertUntouched(file, old, call);
    });
  });
}

test('a call that succeeds and gives nothing fails like one that does not', async (t) => {
  const giving = FAULTS.filter(({ gives }) => gives);
  const screenshots = await failEach(t, giving, '0', false);
  giving.forEach(({ call, text }, i) => {
    const { answer, errors, file } = screenshots[i];
    assert.equal(answer, false, call);
    assert.ok(errors[0].startsWith(`${text}HRESULT: ${INVALID_POINTER}`), `${call}: ${errors[0]}`);
    assertUntouched(file, false, call);
  });
});
