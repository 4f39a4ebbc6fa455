'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { assertRecording, assertSize } = require('./support/check');
const { openPattern } = require('./support/desktop');
const { loadSilently } = require('./support/package');
const { record, recordAll } = require('./support/recording');

const Brisolte = loadSilently();
const monitor = new Brisolte().getMonitors().find((each) => each.isPrimary);

const fillScreen = (t) =>
  openPattern(t, { title: 'Whole screen', x: 0, y: 0, width: monitor.rect.width, height: monitor.rect.height });

test('the screen is recorded as it is shown', async (t) => {
  const window = await fillScreen(t);
  const recording = await record({ window, pictures: 90, settings: [['setMonitor', monitor.index]] });
  const { video } = assertRecording(recording, { picture: window.picture });
  assertSize(video, monitor.rect);
  assert.equal(video.codec_name, 'h264');
  assert.deepEqual(
    [video.color_range, video.color_space, video.color_transfer, video.color_primaries],
    ['tv', 'bt709', 'bt709', 'bt709'],
  );
});

test('a fresh instance records the first monitor', async (t) => {
  const window = await fillScreen(t);
  const recording = await record({ window, pictures: 40 });
  const { video } = assertRecording(recording, { picture: window.picture });
  assertSize(video, new Brisolte().getMonitors()[0].rect);
});

test('a monitor index that no monitor has fails', async (t) => {
  const window = await openPattern(t, { title: 'Mover' });
  const count = new Brisolte().getMonitors().length;
  const indices = [count, count + 1, 2 ** 31 - 1, -1, -(2 ** 31)];
  const plans = indices.map((index) => ({ window, settings: [['setMonitor', index]] }));
  const { recordings } = await recordAll([...plans, { window, pictures: 20, settings: [['setMonitor', 0]] }]);
  recordings.slice(0, -1).forEach(({ started, capturing, log }, i) => {
    assert.deepEqual([started, capturing], [false, false]);
    assert.match(log, new RegExp(`\\[ERROR\\] Invalid monitor index: ${indices[i]}\\b`));
    assert.match(log, /\[ERROR\] VideoCapture: CreateCaptureItem failed/);
    assert.match(log, /\[ERROR\] Failed to create video capture/);
  });
  assert.equal(recordings.at(-1).stopped, true);
});
