'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const { test } = require('node:test');
const { openPattern } = require('../support/desktop');
const { ACCESS_DENIED } = require('../support/faults');
const { assertPixels } = require('../support/pattern');
const { readPng, takeAll } = require('../support/screenshot');

const DENIED = `HRESULT: ${ACCESS_DENIED}`;
const UNSAVED = 'Failed to save frame to file';
const always = (call) => `${call} ${ACCESS_DENIED}`;
const nothing = (call) => `${call} 0`;

const inWindow = (handle) => [['setWindow', handle]];
const onMonitor = () => [['setMonitor', 0]];
const inRegion = () => [['setRegion', { left: 0, top: 0, width: 10, height: 10 }]];

// The ERROR lines of each failing call; each begins with the text here, and the system's own text may follow.
const REFUSED = [
  { rule: always('GetItemInterop'), errors: [`Failed to create capture item: ${DENIED}`] },
  { rule: always('CreateForWindow'), errors: [`Failed to create capture item: ${DENIED}`] },
  { rule: always('CreateForMonitor'), target: onMonitor, errors: [`Failed to create capture item: ${DENIED}`] },
  { rule: always('CreateForMonitor'), target: inRegion, errors: [`Failed to create capture item: ${DENIED}`] },
  { rule: nothing('CreateForWindow'), errors: ['Capture item is null'] },
  { rule: nothing('CreateForMonitor'), target: onMonitor, errors: ['Capture item is null'] },
  { rule: always('QueryDxgiDevice'), errors: ['Failed to get DXGI device'] },
  {
    rule: always('CreateDirect3D11DeviceFromDXGIDevice'),
    errors: [`Failed to create WinRT Direct3D device: ${DENIED}`],
  },
  { rule: nothing('TryGetNextFrame'), errors: ['Failed to get frame'] },
  { rule: nothing('get_Surface'), errors: ['Failed to get frame surface'] },
  { rule: always('GetInterfaceAccess'), errors: [`Failed to get frame texture: ${DENIED}`, UNSAVED] },
  { rule: always('GetTexture2D'), errors: [`Failed to get frame texture: ${DENIED}`, UNSAVED] },
  { rule: always('CreateStagingTexture'), errors: [`Failed to create staging texture: ${DENIED}`, UNSAVED] },
  { rule: always('Map'), errors: [`Failed to map staging texture: ${DENIED}`, UNSAVED] },
];

// Calls whose failure has no text of its own and reaches the caller; of those after `saved` there is a file.
const RAISED = [
  ...['get_Size', 'GetFramePoolStatics', 'CreateFreeThreaded', 'CreateCaptureSession', 'StartCapture'],
  ...['TryGetNextFrame', 'get_Surface', 'get_ContentSize'],
];
const RAISED_AFTER_SAVING = ['CloseSession', 'ClosePool', 'Close'];
// Results that succeed and yet give nothing.
const EMPTY = ['CreateFreeThreaded', 'CreateCaptureSession'];

async function takeWithFaults(t, plans) {
  const window = await openPattern(t, { title: 'Faults', x: 20, y: 20, width: 320, height: 192 });
  const given = plans.map(({ rule, target = inWindow }) => ({ rules: [rule], settings: target(window.handle) }));
  const screenshots = await takeAll([...given, { settings: inWindow(window.handle) }]);
  const good = screenshots.pop();
  assert.deepEqual([good.answer, good.errors], [true, []]);
  assertPixels(readPng(good.file), { picture: window.picture });
  return screenshots;
}

test('each failing step has its texts, and a good screenshot follows', async (t) => {
  const screenshots = await takeWithFaults(t, REFUSED);
  REFUSED.forEach(({ rule, errors }, i) => {
    const { answer, errors: seen, file } = screenshots[i];
    assert.equal(answer, false, rule);
    assert.equal(seen.length, errors.length, `${rule}: ${seen.join('\n')}`);
    errors.forEach((text, line) => assert.ok(seen[line].startsWith(text), `${rule}: ${seen[line]}`));
    assert.equal(fs.existsSync(file), false, rule);
  });
});

test('failures without a text of their own reach the caller with their code', async (t) => {
  const screenshots = await takeWithFaults(t, [...RAISED, ...RAISED_AFTER_SAVING].map((call) => ({ rule: always(call) }))); // prettier-ignore
  screenshots.forEach(({ answer, file }, i) => {
    const call = [...RAISED, ...RAISED_AFTER_SAVING][i];
    assert.match(String(answer), /^Error: HRESULT: 0x80070005/, call);
    assert.equal(fs.existsSync(file), RAISED_AFTER_SAVING.includes(call), call);
  });
});

test('a service that gives nothing where it succeeds reaches the caller', async (t) => {
  const screenshots = await takeWithFaults(t, EMPTY.map((call) => ({ rule: nothing(call) }))); // prettier-ignore
  screenshots.forEach(({ answer }, i) => assert.match(String(answer), /^Error: HRESULT: 0x80004003/, EMPTY[i]));
});
