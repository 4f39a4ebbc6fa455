'use strict';

// What drivers of real machines lack.

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { assertRecording } = require('../support/check');
const { openPattern } = require('../support/desktop');
const { recordUnder, told } = require('../support/faulty-recording');
const { assertPixels } = require('../support/pattern');
const { readPng, takeAll } = require('../support/screenshot');

const NO_INTERFACE = '0x80004002';
const NOT_IMPLEMENTED = '0x80004001';
const UNSUPPORTED = '0x887a0004';
const DEVICE_REMOVED = '0x887a0005';

test('without a video processor the picture is the same', async (t) => {
  const rules = [
    `QueryVideoDevice ${NO_INTERFACE}`,
    `QueryVideoContext ${NO_INTERFACE}`,
    `CreateVideoProcessorEnumerator ${NOT_IMPLEMENTED}`,
    `CreateVideoProcessorEnumerator ${UNSUPPORTED}`,
    `CreateVideoProcessor ${NOT_IMPLEMENTED}`,
  ];
  const { outcomes, picture } = await recordUnder(t, { rules, moments: ['start'], pictures: 40 });
  for (const outcome of outcomes) {
    assert.deepEqual([outcome.started, outcome.stopped, outcome.errors], [true, true, []], told(outcome));
    assertRecording(outcome, { picture });
  }
});

test('a driver that cannot share NV12 textures records all the same', async (t) => {
  const rules = ['CreateSharedTexture 0x80070057'];
  const { outcomes, picture } = await recordUnder(t, { rules, moments: ['start'], pictures: 40 });
  assert.deepEqual([outcomes[0].started, outcomes[0].stopped, outcomes[0].errors], [true, true, []], told(outcomes[0]));
  assertRecording(outcomes[0], { picture });
});

test('a screenshot after the loss of the device gets a new one', async (t) => {
  const window = await openPattern(t, { title: 'Lost', x: 20, y: 20, width: 320, height: 192 });
  const settings = [['setWindow', window.handle]];
  const lost = `GetDeviceRemovedReason ${DEVICE_REMOVED}`;
  const [none, again] = await takeAll([
    { settings, rules: [`${lost} times 1`, `D3D11CreateDevice ${UNSUPPORTED}`] },
    { settings, rules: [lost] },
  ]);
  assert.deepEqual([none.answer, none.errors], [false, ['Failed to initialize Direct3D11 device']]);
  assert.deepEqual([again.answer, again.errors], [true, []]);
  assertPixels(readPng(again.file), { picture: window.picture });
});
