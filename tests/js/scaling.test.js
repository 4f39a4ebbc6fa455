'use strict';

// On a scaled display everything is as on one that is not: places and pictures are in the monitors' own pixels. The tests run
// once for each of several scales.

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { assertRecording, assertSize } = require('./support/check');
const { openPattern } = require('./support/desktop');
const { loadSilently } = require('./support/package');
const { assertPixels, readNumber } = require('./support/pattern');
const { record } = require('./support/recording');
const { readPng, take } = require('./support/screenshot');

const Brisolte = loadSilently();
const capture = new Brisolte();
const [width, height] = process.env.BRISOLTE_SCREEN.split('x').map(Number);

const fillScreen = (t) => openPattern(t, { title: 'Whole screen', x: 0, y: 0, width, height });
const isWhole = (rect) => assert.deepEqual(rect, { left: 0, top: 0, right: width, bottom: height, width, height });

test('the monitor is listed with its own pixels', async (t) => {
  const { dpi } = (await fillScreen(t)).state;
  assert.equal(dpi, Number(process.env.BRISOLTE_DPI), 'the display has the scale that it was given');
  isWhole(capture.getMonitors()[0].rect);
});

test('a window is listed where its pixels are', async (t) => {
  const window = await openPattern(t, { title: 'Scaled', x: 131, y: 77, width: 643, height: 362 });
  const { rect } = capture.getWindows().find((each) => each.handle === window.handle);
  assert.deepEqual(rect, { left: 131, top: 77, right: 774, bottom: 439, width: 643, height: 362 });
});

test('a window too small to be listed is measured in its pixels', async (t) => {
  const isListed = (window) => capture.getWindows().some((each) => each.handle === window.handle);
  assert.equal(isListed(await openPattern(t, { title: 'Large enough', width: 51, height: 51 })), true);
  assert.equal(isListed(await openPattern(t, { title: 'Too small', width: 50, height: 51 })), false);
});

test('the whole screen is recorded', async (t) => {
  const window = await fillScreen(t);
  const { video } = assertRecording(await record({ window, pictures: 40 }), { picture: window.picture });
  assertSize(video, { width, height });
});

test('a window is recorded', async (t) => {
  const window = await openPattern(t, { title: 'Scaled', x: 131, y: 77, width: 643, height: 362 });
  const recording = await record({ window, pictures: 40, settings: [['setWindow', window.handle]] });
  assertSize(assertRecording(recording, { picture: window.picture }).video, { width: 643, height: 362 });
});

// What a script sees of the monitor, and asks for; not to be cut out of a picture that is larger than that.
const rightHalf = ({ left, top, width: whole, height: tall }) => ({ left: left + whole / 2, top, width: whole / 2, height: tall });

test('the right half of the listed monitor is recorded as a region', async (t) => {
  const window = await fillScreen(t);
  const region = rightHalf(capture.getMonitors()[0].rect);
  const recording = await record({ window, pictures: 40, settings: [['setRegion', region]] });
  const { video } = assertRecording(recording, { picture: window.picture, left: width / 2 });
  assertSize(video, { width: width / 2, height });
});

test('screenshots show every pixel of the screen, of a region and of a window', async (t) => {
  const window = await fillScreen(t);
  const { picture } = window;
  const region = rightHalf(capture.getMonitors()[0].rect);
  for (const { settings, ...shown } of [
    { settings: ['setMonitor', 0], width, height },
    { settings: ['setRegion', region], left: width / 2, width: width / 2, height },
    { settings: ['setWindow', window.handle], width, height },
  ]) {
    const png = readPng((await take({ settings: [settings] })).file);
    assert.deepEqual([png.width, png.height], [shown.width, shown.height]);
    assertPixels(png, { picture, ...shown });
    readNumber(png, { picture, left: shown.left });
  }
});
