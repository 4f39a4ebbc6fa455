'use strict';

// Windows whose pictures the system makes larger than what is drawn of them, by invisible borders.

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { assertRecording, assertSize } = require('../support/check');
const { openPattern } = require('../support/desktop');
const { recordUnder, told } = require('../support/faulty-recording');
const { BLACK, assertColour, assertPixels } = require('../support/pattern');
const { readPng, takeAll } = require('../support/screenshot');

const RULES = ['InvisibleBorders 1'];
const BORDERS = { width: 14, height: 7 };
// Where an encoder smears the picture's edge.
const SMEAR = 4;

test('a recording has the size that the system gives the window, with black edges right and below', async (t) => {
  const { outcomes, picture } = await recordUnder(t, { rules: RULES, moments: ['start'], pictures: 40 });
  const [outcome] = outcomes;
  const { width, height } = picture;
  assert.deepEqual([outcome.started, outcome.stopped, outcome.errors], [true, true, []], told(outcome));
  const { video, frames } = assertRecording(outcome, { picture });
  assertSize(video, { width: width + BORDERS.width, height: height + BORDERS.height });
  for (const frame of [frames[0], frames.at(-1)]) {
    const [right, bottom] = [frame.width, frame.height];
    assertColour(frame, { left: width + SMEAR, top: 0, right, bottom }, BLACK);
    assertColour(frame, { left: 0, top: height + SMEAR, right, bottom }, BLACK);
  }
});

test('a screenshot shows what is drawn of the window and no more', async (t) => {
  const window = await openPattern(t, { title: 'Borders', x: 20, y: 20, width: 320, height: 192 });
  const [{ answer, errors, infos, file }] = await takeAll([{ settings: [['setWindow', window.handle]], rules: RULES }]);
  assert.deepEqual([answer, errors], [true, []]);
  assert.ok(infos.includes('Capture item size: 334x199'), infos.join('\n'));
  const png = readPng(file);
  assert.deepEqual([png.width, png.height], [320, 192]);
  assertPixels(png, { picture: window.picture });
});
