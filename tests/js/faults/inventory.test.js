'use strict';

// Each call that can be made to fail does so once: when a recording starts, in its middle and when it stops.

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { assertRecording } = require('../support/check');
const { ACCESS_DENIED, failingCalls } = require('../support/faults');
const { recordUnder, told } = require('../support/faulty-recording');
const media = require('../support/media');

const DEVICE_REMOVED = '0x887a0005';

async function recordPicture(t, given) {
  const { outcomes, good, picture } = await recordUnder(t, given);
  assert.deepEqual([good.started, good.stopped, good.errors], [true, true, []]);
  assertRecording(good, { picture });
  return outcomes;
}

test('a call that fails once, at whatever moment, costs no more than the attempt', async (t) => {
  const calls = failingCalls('Capture and Direct3D');
  assert.ok(calls.length > 30 && calls.includes('Map'), `${calls}`);
  const rules = calls.map((call) => `${call} ${ACCESS_DENIED} times 1`);
  const outcomes = await recordPicture(t, { rules, moments: ['start', 'middle', 'stop'], pictures: 12 });
  for (const outcome of outcomes) {
    const { moment, started, stopped, capturing } = outcome;
    assert.equal(capturing, false, told(outcome));
    assert.equal(stopped, started === true, told(outcome));
    if (moment === 'start') {
      assert.ok(typeof started === 'boolean' || /^Error: .*80070005/i.test(started), told(outcome));
    } else {
      assert.equal(started, true, told(outcome));
    }
  }
  media.assertWhole(outcomes.filter(({ started }) => started === true).map(({ file }) => file));
});

// Calls that give something, which they may fail to do and yet succeed.
const GIVING = [
  ...['GetItemInterop', 'CreateForWindow', 'GetFramePoolStatics', 'CreateFreeThreaded', 'CreateCaptureSession'],
  ...['D3D11CreateDevice', 'QueryVideoDevice', 'QueryVideoContext', 'QueryMultithread', 'QueryDxgiDevice'],
  ...['CreateDirect3D11DeviceFromDXGIDevice', 'CreateVideoProcessorEnumerator', 'CreateVideoProcessor'],
  ...['TryGetNextFrame', 'get_Surface', 'GetInterfaceAccess', 'GetDxgiSurface', 'QueryTexture'],
  ...['CreateSharedTexture', 'CreateStagingTexture', 'CreateInputView', 'CreateOutputView', 'Map'],
];

test('a call that succeeds and gives nothing costs no more than the attempt', async (t) => {
  const rules = GIVING.map((call) => `${call} 0 times 1`);
  const outcomes = await recordPicture(t, { rules, moments: ['start', 'middle'], pictures: 12 });
  for (const outcome of outcomes) {
    const { moment, started, stopped, capturing } = outcome;
    assert.equal(capturing, false, told(outcome));
    assert.equal(stopped, started === true, told(outcome));
    assert.ok(moment === 'start' || started === true, told(outcome));
    assert.doesNotMatch(String(started), /deadlock/, told(outcome));
  }
  media.assertWhole(outcomes.filter(({ started }) => started === true).map(({ file }) => file));
});

test('a device that is removed in mid-recording ends the picture, not the recording', async (t) => {
  const lost = ['CreateTexture2D', 'CreateInputView', 'CreateOutputView', 'VideoProcessorBlt', 'Map'];
  const rules = [lost.map((call) => `${call} ${DEVICE_REMOVED}`).join('\r\n')];
  const outcomes = await recordPicture(t, { rules, moments: ['middle'], pictures: 20 });
  const [{ started, stopped, errors, file }] = outcomes;
  assert.deepEqual([started, stopped], [true, true]);
  assert.ok(errors.some((text) => /887a0005/i.test(text)), errors.join('\n'));
  media.assertWhole([file]);
});
