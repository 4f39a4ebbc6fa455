'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { assertRecording } = require('../support/check');
const { openPattern } = require('../support/desktop');
const { ACCESS_DENIED, FAULTS_FILE } = require('../support/faults');
const { scenario } = require('../support/scenario');
const { scratchFolder } = require('../support/scratch');

const SMALL = { x: 20, y: 20, width: 320, height: 192 };
const DENIED = `HRESULT: ${ACCESS_DENIED}`;

// For each rule: startRecord's answer and log while it holds. Then one good recording with the same instance.
async function startWithFaults({ Brisolte, log, painted, paintedMore, require: load }, given) {
  const fs = load('node:fs');
  const capture = new Brisolte();
  capture.setOutputDir(given.dir);
  const outcomes = given.attempts.map(({ rules, mode }) => {
    fs.writeFileSync(given.faults, rules.map((rule) => `${rule}\r\n`).join(''));
    capture.setWindow(given.handle);
    capture.setMode(mode);
    const mark = log.mark();
    let started;
    try {
      started = capture.startRecord();
    } catch (error) {
      started = `${error.constructor.name}: ${error.message}`;
    }
    const outcome = { started, capturing: capture.isCapturing(), stopped: capture.stopRecord() };
    fs.rmSync(given.faults);
    return { ...outcome, errors: log.since(mark).errors };
  });
  capture.setWindow(given.handle);
  const mark = log.mark();
  const before = painted(given.progress);
  const started = capture.startRecord();
  await log.line('First Video frame arrived at: ', mark);
  await paintedMore(given.progress, 30);
  const stopped = capture.stopRecord();
  const good = { started, stopped, file: capture.getSaveFilePath(), painted: [before, painted(given.progress)] };
  return { outcomes, good };
}

async function attempt(t, attempts) {
  const window = await openPattern(t, { title: 'Faults', ...SMALL });
  const { value } = await scenario(startWithFaults, {
    attempts,
    faults: FAULTS_FILE,
    dir: scratchFolder(),
    handle: window.handle,
    progress: window.progress,
  });
  assert.deepEqual([value.good.started, value.good.stopped], [true, true]);
  assertRecording(value.good, { picture: window.picture });
  return value.outcomes;
}

const WINDOW = 1;
const SCREEN = 0;
const FAILED = 'Failed to create video capture';
const step = (name) => `VideoCapture: ${name} failed`;
const always = (call) => [`${call} ${ACCESS_DENIED}`];
const nothing = (call) => [`${call} 0`];

// The ERROR lines that each failing call leads to. Each begins with the text here; the system's own text may follow.
const FAULTS = [
  {
    rules: always('D3D11CreateDevice'),
    errors: [
      ...[1, 5, 2].map((type) => `Failed to create D3D11 device with driver type ${type}: ${DENIED}`),
      'Failed to create D3D11 device with any driver type',
      step('InitializeD3D11'),
    ],
  },
  { rules: always('QueryVideoDevice'), errors: [`Failed to get video device: ${DENIED}`, step('InitializeD3D11')] },
  { rules: always('QueryVideoContext'), errors: [`Failed to get video context: ${DENIED}`, step('InitializeD3D11')] },
  {
    rules: always('CreateDirect3D11DeviceFromDXGIDevice'),
    errors: ['Failed to create WinRT Direct3D device', step('InitializeWGCDevice')],
  },
  {
    rules: always('GetItemInterop'),
    errors: ['Failed to get GraphicsCaptureItemInterop interface', step('InitializeWGCDevice')],
  },
  {
    rules: always('CreateForWindow'),
    errors: [`Failed to create window videoCapture item: ${DENIED}`, step('CreateCaptureItem')],
  },
  {
    rules: always('CreateForMonitor'),
    mode: SCREEN,
    errors: [`Failed to create monitor videoCapture item: ${DENIED}`, step('CreateCaptureItem')],
  },
  { rules: always('CreateFreeThreaded'), errors: ['Failed to create frame pool object', step('CreateFramePool')] },
  {
    rules: always('CreateCaptureSession'),
    errors: ['Failed to create videoCapture from frame pool', step('CreateFramePool')],
  },
  { rules: nothing('CreateForWindow'), errors: ['Capture item is null after creation', step('CreateCaptureItem')] },
  { rules: nothing('CreateFreeThreaded'), errors: ['Failed to create frame pool object', step('CreateFramePool')] },
  {
    rules: nothing('CreateCaptureSession'),
    errors: ['Frame pool is null after creating capture session', step('CreateFramePool')],
  },
  {
    rules: nothing('CreateDirect3D11DeviceFromDXGIDevice'),
    errors: ['Failed to create WinRT Direct3D device', step('InitializeWGCDevice')],
  },
  {
    rules: always('CreateVideoProcessorEnumerator'),
    errors: [`Failed to create video processor enumerator: ${DENIED}`, step('CreateFramePool')],
  },
  {
    rules: always('CreateVideoProcessor'),
    errors: [`Failed to create video processor: ${DENIED}`, step('CreateFramePool')],
  },
];

test('each failing step of the set-up has its texts, and a good recording follows', async (t) => {
  const outcomes = await attempt(t, FAULTS.map(({ rules, mode = WINDOW }) => ({ rules, mode }))); // prettier-ignore
  FAULTS.forEach(({ rules, errors }, i) => {
    const { started, capturing, stopped, errors: seen } = outcomes[i];
    assert.deepEqual([started, capturing, stopped], [false, false, false], rules[0]);
    const wanted = [...errors, FAILED];
    assert.equal(seen.length, wanted.length, `${rules[0]}: ${seen.join('\n')}`);
    wanted.forEach((text, line) => assert.ok(seen[line].startsWith(text), `${rules[0]}: ${seen[line]}`));
  });
});

test('a device without a DXGI face fails', async (t) => {
  const [{ started, capturing, errors }] = await attempt(t, [{ rules: always('QueryDxgiDevice'), mode: WINDOW }]);
  assert.ok(started === false || /^Error: .*Failed to get DXGI device/.test(started), started);
  assert.equal(capturing, false);
  assert.ok(started !== false || errors.some((text) => text.includes('Failed to get DXGI device')), errors.join('\n'));
});

test('failures without a text of their own reach the caller with their code', async (t) => {
  const calls = ['get_Size', 'GetFramePoolStatics', 'add_FrameArrived', 'StartCapture'];
  const outcomes = await attempt(t, calls.map((call) => ({ rules: always(call), mode: WINDOW }))); // prettier-ignore
  calls.forEach((call, i) => {
    const { started, capturing, stopped } = outcomes[i];
    assert.match(String(started), /^Error: /, call);
    assert.match(started, /80070005/i, call);
    assert.doesNotMatch(started, /deadlock/, call);
    assert.deepEqual([capturing, stopped], [false, false], call);
  });
});

test('the next driver type is tried when the hardware has none', async (t) => {
  const [{ errors }] = await attempt(t, [{ rules: [`D3D11CreateDevice ${ACCESS_DENIED} times 1`], mode: WINDOW }]);
  assert.ok(errors[0].startsWith(`Failed to create D3D11 device with driver type 1: ${DENIED}`), errors.join('\n'));
});

test('an instance without a device cannot be made', async () => {
  const { value } = await scenario(
    ({ Brisolte, require: load }, { faults, rule }) => {
      const fs = load('node:fs');
      fs.writeFileSync(faults, rule);
      const messages = [1, 2].map(() => {
        try {
          return typeof new Brisolte();
        } catch (error) {
          return `${error.constructor.name}: ${error.message}`;
        }
      });
      fs.rmSync(faults);
      return [...messages, new Brisolte().isCapturing()];
    },
    { faults: FAULTS_FILE, rule: always('D3D11CreateDevice')[0] },
  );
  const text = 'Error: Failed to initialize Direct3D11 device';
  assert.deepEqual(value, [text, text, false]);
});
