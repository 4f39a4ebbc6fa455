'use strict';

// A capture service that does not come back from a call: the host goes on, and the file is complete.

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { assertRecording } = require('../support/check');
const { recordUnder, told } = require('../support/faulty-recording');

const LEFT = 'Capture service does not answer, left behind: ';

test('a session that does not end leaves the file whole, and the next recording works', async (t) => {
  const rules = ['CloseSession hang times 1', 'ClosePool hang times 1'];
  const { outcomes, good, picture } = await recordUnder(t, { rules, moments: ['stop'], pictures: 40 });
  for (const outcome of outcomes) {
    assert.deepEqual([outcome.started, outcome.stopped, outcome.capturing], [true, true, false], told(outcome));
    assertRecording(outcome, { picture });
  }
  const [session, pool] = outcomes;
  assert.deepEqual(session.errors, [`${LEFT}GraphicsCaptureSession.Close`]);
  assert.deepEqual(pool.errors, [`${LEFT}giving the capture back`]);
  assert.deepEqual([good.started, good.stopped, good.errors], [true, true, []]);
  assertRecording(good, { picture });
});

test('a service that does not answer at the start fails that start alone', async (t) => {
  const rules = ['CreateForWindow hang times 1', 'get_Size hang times 1', 'StartCapture hang times 1'];
  const { outcomes, good, picture } = await recordUnder(t, { rules, moments: ['start'], pictures: 40 });
  const [item, size, start] = outcomes;
  assert.deepEqual([item.started, item.stopped], [false, false], told(item));
  assert.deepEqual(item.errors.slice(0, 1), [`${LEFT}CreateForWindow`]);
  for (const [outcome, call] of [[size, 'GraphicsCaptureItem.Size'], [start, 'StartCapture']]) { // prettier-ignore
    assert.match(String(outcome.started), /HRESULT: 0x800705b4/, told(outcome));
    assert.deepEqual([outcome.stopped, outcome.capturing], [false, false]);
    assert.equal(outcome.errors[0], `${LEFT}${call}`);
  }
  assert.deepEqual([good.started, good.stopped, good.errors], [true, true, []]);
  assertRecording(good, { picture });
});

test('a frame that does not arrive leaves the file whole, and the next recording works', async (t) => {
  const rules = ['TryGetNextFrame hang times 1', 'get_Surface hang times 1'];
  const given = { rules, moments: ['middle'], pictures: 40, picturesAfter: 10 };
  const { outcomes, good, picture } = await recordUnder(t, given);
  for (const outcome of outcomes) {
    assert.deepEqual([outcome.started, outcome.stopped, outcome.capturing], [true, true, false], told(outcome));
    assert.deepEqual(outcome.errors, [`${LEFT}the frame that was arriving`]);
    assertRecording(outcome, { picture });
  }
  assert.deepEqual([good.started, good.stopped, good.errors], [true, true, []]);
  assertRecording(good, { picture });
});
