'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { openPattern } = require('../support/desktop');
const { ACCESS_DENIED, FAULTS_FILE } = require('../support/faults');
const media = require('../support/media');
const { assertAdvances, readNumber } = require('../support/pattern');
const { scenario } = require('../support/scenario');
const { scratchFolder } = require('../support/scratch');

const SMALL = { x: 20, y: 20, width: 320, height: 192 };
const DENIED = `HRESULT: ${ACCESS_DENIED}`;

// Starts with calls that fail, lets them work again once the failure is in the log, and records on.
async function recordThroughFaults({ Brisolte, log, painted, paintedMore, require: load }, given) {
  const fs = load('node:fs');
  const capture = new Brisolte();
  capture.setOutputDir(given.dir);
  capture.setWindow(given.handle);
  capture.setEncoder(given.encoder);
  fs.writeFileSync(given.faults, `${given.rule}\r\n`);
  const answers = [capture.startRecord()];
  await log.line(given.text);
  answers.push(capture.isCapturing());
  fs.rmSync(given.faults);
  const before = painted(given.progress);
  await paintedMore(given.progress, 60);
  answers.push(capture.stopRecord(), capture.isCapturing());
  return { answers, file: capture.getSaveFilePath(), painted: [before, painted(given.progress)] };
}

const FAULTS = [
  { call: 'get_Surface', text: 'in SurfaceFromFrame: ' },
  { call: 'GetInterfaceAccess', text: '[ERROR] Failed to get IDirect3DDxgiInterfaceAccess interface' },
  { call: 'GetDxgiSurface', text: `[ERROR] Failed to get DXGI surface: ${DENIED}` },
  { call: 'GetSurfaceDesc', text: `[ERROR] Failed to get DXGI surface description: ${DENIED}` },
  { call: 'QueryTexture', text: `[ERROR] Failed to get capture texture: ${DENIED}` },
  { call: 'CreateSharedTexture', text: `[ERROR] Failed to create shared texture: ${DENIED}` },
  { call: 'CreateStagingTexture', text: `[ERROR] Failed to create staging texture: ${DENIED}` },
  { call: 'Map', text: `[ERROR] Failed to map staging texture: ${DENIED}` },
  { call: 'CreateInputView', text: '[ERROR] ' },
  { call: 'CreateOutputView', text: '[ERROR] ' },
  { call: 'VideoProcessorBlt', text: '[ERROR] ' },
];

for (const { call, text } of FAULTS) {
  test(`frames are dropped while ${call} fails, and recorded when it works again`, async (t) => {
    const window = await openPattern(t, { title: 'Frame faults', ...SMALL });
    const { value, log } = await scenario(recordThroughFaults, {
      rule: `${call} ${ACCESS_DENIED}`,
      text,
      encoder: 'libx264',
      faults: FAULTS_FILE,
      dir: scratchFolder(),
      handle: window.handle,
      progress: window.progress,
    });
    assert.deepEqual(value.answers, [true, true, true, false], log.text);
    const numbers = media.frames(value.file).map((frame) => readNumber(frame, { picture: window.picture }));
    assertAdvances(numbers);
  });
}

test('events whose frame cannot be had are survived', async (t) => {
  const window = await openPattern(t, { title: 'No frames', ...SMALL });
  const calls = ['TryGetNextFrame', 'get_SystemRelativeTime', 'CloseFrame'].map((call) => `${call} ${ACCESS_DENIED}`);
  for (const rule of [...calls, 'TryGetNextFrame 0']) {
    const { value, log } = await scenario(
      async ({ Brisolte, paintedMore, require: load }, given) => {
        const fs = load('node:fs');
        const capture = new Brisolte();
        capture.setOutputDir(given.dir);
        capture.setWindow(given.handle);
        fs.writeFileSync(given.faults, given.rule);
        const answers = [capture.startRecord()];
        await paintedMore(given.progress, 20);
        fs.rmSync(given.faults);
        await paintedMore(given.progress, 20);
        return [...answers, capture.isCapturing(), capture.stopRecord(), capture.isCapturing()];
      },
      {
        rule,
        faults: FAULTS_FILE,
        dir: scratchFolder(),
        handle: window.handle,
        progress: window.progress,
      },
    );
    assert.deepEqual(value, [true, true, true, false], rule);
    assert.equal(log.has('WARNING', 'No frame available'), rule === 'TryGetNextFrame 0', log.text);
  }
});

test('a session whose closing fails still completes the file', async (t) => {
  const window = await openPattern(t, { title: 'Close', ...SMALL });
  const { value, log } = await scenario(
    async ({ Brisolte, log: live, paintedMore, require: load }, given) => {
      const fs = load('node:fs');
      const capture = new Brisolte();
      capture.setOutputDir(given.dir);
      capture.setWindow(given.handle);
      const answers = [capture.startRecord()];
      await live.line('First Video frame arrived at: ');
      await paintedMore(given.progress, 20);
      fs.writeFileSync(given.faults, given.rule);
      answers.push(capture.stopRecord(), capture.isCapturing());
      fs.rmSync(given.faults);
      return { answers, file: capture.getSaveFilePath() };
    },
    {
      rule: `CloseSession ${ACCESS_DENIED}`,
      faults: FAULTS_FILE,
      dir: scratchFolder(),
      handle: window.handle,
      progress: window.progress,
    },
  );
  assert.deepEqual(value.answers, [true, true, false], log.text);
  assert.ok(log.has('ERROR', /^Error during audio cleanup: .*80070005/i), log.text);
  assert.ok(media.frames(value.file).length > 0, log.text);
});
