'use strict';

const assert = require('node:assert/strict');
const { before, after, test } = require('node:test');
const { assertRecording, assertSize, even } = require('./support/check');
const { openPattern } = require('./support/desktop');
const { BLACK, assertColour } = require('./support/pattern');
const { loadSilently } = require('./support/package');
const { record, recordAll } = require('./support/recording');

const Brisolte = loadSilently();
const { rect } = new Brisolte().getMonitors()[0];

let screen;
const cleanUp = [];
before(async () => {
  const place = { x: rect.left, y: rect.top, width: rect.width, height: rect.height };
  screen = await openPattern({ after: (work) => cleanUp.push(work) }, { title: 'Under the region', ...place });
});
after(() => Promise.all(cleanUp.map((work) => work())));

// Regions are given from the monitor's corner.
const region = (left, top, width, height) => ({ left: rect.left + left, top: rect.top + top, width, height });
const recordRegion = (given, pictures = 60) =>
  record({ window: screen, pictures, settings: [['setMonitor', 0], ['setRegion', given]] }); // prettier-ignore

// The edges of the rulers are compared across and down where the region shows them.
const REGIONS = [
  { name: 'at the origin', left: 0, top: 0, width: 640, height: 360 },
  { name: 'of odd size at the origin', left: 0, top: 0, width: 401, height: 301 },
  { name: 'with an odd offset along the top', left: 101, top: 0, width: 640, height: 360, down: false },
  { name: 'with an odd offset along the left', left: 0, top: 33, width: 640, height: 360, across: false },
  { name: 'with an offset inside', left: 150, top: 120, width: 640, height: 480, exact: false },
  { name: 'of odd size and offset inside', left: 151, top: 121, width: 601, height: 201, exact: false },
  { name: 'at the far corner', left: rect.width - 640, top: rect.height - 360, width: 640, height: 360 },
  { name: 'as large as the monitor', left: 0, top: 0, width: rect.width, height: rect.height },
];

for (const { name, left, top, width, height, ...rest } of REGIONS) {
  test(`a region ${name} shows that part of the screen`, async () => {
    const recording = await recordRegion(region(left, top, width, height));
    assert.ok(recording.log.has('INFO', `Capture dimensions set to: ${even(width)}x${even(height)}`));
    const { video } = assertRecording(recording, { picture: screen.picture, left, top, ...rest });
    assertSize(video, { width, height });
  });
}

// Parts of the region beyond the monitor, as rectangles of the frame.
const BEYOND = [
  {
    name: 'right and bottom',
    place: [rect.width - 640, rect.height - 330, 720, 420],
    black: [
      { left: 644, top: 4, right: 716, bottom: 416 },
      { left: 4, top: 334, right: 716, bottom: 416 },
    ],
  },
  {
    name: 'left and top',
    place: [-80, -90, 720, 420],
    black: [
      { left: 4, top: 4, right: 76, bottom: 416 },
      { left: 4, top: 4, right: 716, bottom: 86 },
    ],
  },
];

for (const { name, place, black } of BEYOND) {
  test(`a region that reaches beyond the monitor is black there: ${name}`, async () => {
    const [left, top, width, height] = place;
    const recording = await recordRegion(region(...place));
    const { video, frames } = assertRecording(recording, { picture: screen.picture, left, top });
    assertSize(video, { width, height });
    black.forEach((area) => assertColour(frames.at(-1), area, BLACK));
  });
}

test('a region without an area is the whole monitor', async () => {
  const settings = [[0, 0], [-1, -1], [100, 0], [0, 100], [-5, 100]].map(([width, height]) => [ // prettier-ignore
    ['setRegion', region(0, 0, width, height)],
  ]);
  const { recordings } = await recordAll(settings.map((each) => ({ window: screen, pictures: 5, settings: each })));
  for (const { log, stopped } of recordings) {
    assert.match(log, new RegExp(`Capture dimensions set to: ${even(rect.width)}x${even(rect.height)}\\b`));
    assert.equal(stopped, true);
  }
});

test('a region outside the monitor fails', async () => {
  const most = 2 ** 31 - 1;
  const outside = [
    region(rect.width, 0, 100, 100),
    region(0, rect.height, 100, 100),
    region(-100, 0, 100, 100),
    region(0, -100, 100, 100),
    region(50000, 50000, 640, 360),
    { left: most, top: most, width: most, height: most },
    { left: -most - 1, top: -most - 1, width: most, height: most },
    { left: -most - 1, top: -most - 1, width: 1, height: 1 },
  ];
  const plans = outside.map((each) => ({ window: screen, settings: [['setRegion', each]] }));
  const good = { window: screen, pictures: 30, settings: [['setRegion', region(0, 0, 640, 360)]] };
  const { recordings } = await recordAll([...plans, good]);
  for (const { started, capturing, log } of recordings.slice(0, -1)) {
    assert.deepEqual([started, capturing], [false, false]);
    assert.match(log, /\[ERROR\] .*region.*/i);
    assert.match(log, /\[ERROR\] VideoCapture: CreateCaptureItem failed/);
    assert.match(log, /\[ERROR\] Failed to create video capture/);
  }
  assertRecording(recordings.at(-1), { picture: screen.picture });
});

test('a region too large for any texture fails', async () => {
  const most = 2 ** 31 - 1;
  const huge = [
    region(0, 0, most, most),
    region(-100, -100, most, 200),
    region(0, 0, 200, 100000),
    { left: -(2 ** 31) + 10, top: 0, width: most, height: 100 },
  ];
  const plans = huge.map((each) => ({ window: screen, settings: [['setRegion', each]] }));
  const good = { window: screen, pictures: 30, settings: [['setRegion', region(0, 0, 640, 360)]] };
  const { recordings } = await recordAll([...plans, good]);
  recordings.slice(0, -1).forEach(({ started, log }) => {
    assert.equal(started, false);
    assert.match(log, /\[ERROR\]/);
  });
  assertRecording(recordings.at(-1), { picture: screen.picture });
});
