'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const { test } = require('node:test');
const { assertRecording } = require('./support/check');
const { openPattern } = require('./support/desktop');
const { assertAdvances, assertPixels, readNumber } = require('./support/pattern');
const { loadSilently } = require('./support/package');
const { scenario } = require('./support/scenario');
const { readPng, take, takeAll } = require('./support/screenshot');
const { scratchFile, scratchFolder } = require('./support/scratch');

const Brisolte = loadSilently();
const { name, rect } = new Brisolte().getMonitors()[0];
// What a screenshot says when the service has no frame within 200 ms, as on a busy machine.
const TOO_SLOW = 'Failed to get frame';
const OUTSIDE = 'Invalid crop region or completely outside the image';

/** A window with the known picture over the whole monitor. */
const openScreen = (t) =>
  openPattern(t, { title: 'Whole screen', x: rect.left, y: rect.top, width: rect.width, height: rect.height });

/** The file has this size and shows the picture, every pixel of it, opaque. */
function assertShows(file, { width, height, ...place }) {
  const png = readPng(file);
  assert.deepEqual([png.width, png.height, png.depth], [width, height, 8]);
  assertPixels(png, place);
  assert.ok(png.alphas.every((alpha) => alpha === 255), 'every pixel is opaque');
  return png;
}

test('a screenshot of the screen shows every pixel of it', async (t) => {
  const { picture } = await openScreen(t);
  const { file, infos } = await take({ settings: [['setMonitor', 0]] });
  readNumber(assertShows(file, { picture, width: rect.width, height: rect.height }), { picture });
  const size = `${rect.width}x${rect.height}`;
  assert.deepEqual(infos, [
    'Starting monitor capture...',
    `Monitor info: ${name} at (${rect.left}, ${rect.top})`,
    'Processing WGC capture item...',
    `Capture item size: ${size}`,
    'Successfully created Direct3D11CaptureFramePool',
    'Successfully created capture session',
    'Started capture',
    `Saving frame to file: ${file}`,
    `Texture size: ${size}`,
    `Successfully saved frame to file: ${file}`,
    'WGC capture completed',
  ]);
});

for (const [width, height] of [[640, 360], [641, 359], [1, 1], [321, 201]]) { // prettier-ignore
  test(`a screenshot of a window of ${width} by ${height} shows every pixel of it`, async (t) => {
    const window = await openPattern(t, { title: 'Window', x: 37, y: 53, width, height });
    const { file, infos } = await take({ settings: [['setWindow', window.handle]] });
    assertShows(file, { picture: window.picture, width, height });
    assert.deepEqual(infos.slice(0, 3), [
      'Starting window capture...',
      'Processing WGC capture item...',
      `Capture item size: ${width}x${height}`,
    ]);
  });
}

test('a screenshot of a window with a frame shows its frame, and not what covers it', async (t) => {
  const window = await openPattern(t, { title: 'Framed', x: 60, y: 60, framed: true, below: true });
  await openPattern(t, { title: 'Cover', x: 150, y: 90, width: 420, height: 200, palette: 2 });
  const { client, frame } = window.state;
  const { file } = await take({ settings: [['setWindow', window.handle]] });
  const place = { picture: window.picture, left: frame.left - client.left, top: frame.top - client.top };
  assertShows(file, { ...place, width: frame.width, height: frame.height });
});

// Regions are given in desktop coordinates and cut out of the image at the same numbers.
const REGIONS = [
  { name: 'at the origin', region: [0, 0, 640, 360], shown: [0, 0, 640, 360] },
  { name: 'elsewhere', region: [150, 120, 640, 480], shown: [150, 120, 640, 480] },
  { name: 'of odd size and place', region: [151, 121, 601, 201], shown: [151, 121, 601, 201] },
  { name: 'of one pixel in the far corner', region: [-1, -1, 1, 1], fromEnd: true, shown: [-1, -1, 1, 1] },
  { name: 'that begins left of the image, moved to its edge', region: [-10, 0, 100, 50], shown: [0, 0, 100, 50] },
  { name: 'that begins above the image, moved to its edge', region: [0, -10, 100, 50], shown: [0, 0, 100, 50] },
  { name: 'that reaches beyond the far corner', region: [-40, -30, 100, 100], fromEnd: true, shown: [-40, -30, 40, 30] },
  { name: 'larger than the image', region: [-50, -50, 5000, 5000], shown: [0, 0, rect.width, rect.height] },
];

const placed = ([left, top, ...size], fromEnd) =>
  fromEnd ? [rect.width + left, rect.height + top, ...size] : [left, top, ...size];

test('screenshots of regions show every pixel of them', async (t) => {
  const { picture } = await openScreen(t);
  const plans = REGIONS.map(({ region, fromEnd }) => {
    const [left, top, width, height] = placed(region, fromEnd);
    return { settings: [['setRegion', { left, top, width, height }]] };
  });
  const screenshots = await takeAll(plans);
  REGIONS.forEach(({ name: what, shown, fromEnd }, i) => {
    const { answer, file, infos, errors } = screenshots[i];
    assert.deepEqual([answer, errors], [true, []], what);
    const [left, top, width, height] = placed(shown, fromEnd);
    assert.ok(infos.includes(`Crop region: (${left}, ${top}, ${width}, ${height})`), infos.join('\n'));
    assertShows(file, { picture, left, top, width, height });
  });
});

test('a region beyond the image fails and leaves no file', async () => {
  const regions = [
    [rect.width, 0, 100, 100],
    [0, rect.height, 100, 100],
    [50000, 50000, 640, 360],
    [2 ** 31 - 101, 0, 100, 100],
  ];
  const plans = regions.map(([left, top, width, height]) => ({
    settings: [['setRegion', { left, top, width, height }]],
  }));
  for (const { answer, file, errors } of await takeAll(plans)) {
    assert.deepEqual([answer, errors], [false, [OUTSIDE, 'Failed to save frame to file']]);
    assert.equal(fs.existsSync(file), false);
  }
});

test('a target that cannot be is refused with its text, and the next screenshot works', async () => {
  const most = 2 ** 31 - 1;
  const region = (left, top, width, height) => [['setRegion', { left, top, width, height }]];
  const refused = [
    [[['setMode', -1]], 'Invalid capture mode'],
    [[['setMonitor', 1]], 'Invalid monitor index'],
    [[['setMonitor', -1]], 'Invalid monitor index'],
    [[['setWindow', 0]], 'Invalid window handle'],
    [[['setWindow', 1]], 'Invalid window handle'],
    [[['setWindow', 2 ** 53]], 'Invalid window handle'],
    [region(0, 0, 0, 100), 'Invalid capture region'],
    [region(0, 0, 100, 0), 'Invalid capture region'],
    [region(0, 0, -100, 100), 'Invalid capture region'],
    [region(most, most, most, most), 'Invalid capture region'],
  ];
  const plans = refused.map(([settings]) => ({ settings }));
  const screenshots = await takeAll([...plans, { settings: [['setMonitor', 0]] }]);
  refused.forEach(([, text], i) => {
    assert.deepEqual([screenshots[i].answer, screenshots[i].errors], [false, [text]]);
    assert.equal(fs.existsSync(screenshots[i].file), false);
  });
  assert.equal(screenshots.at(-1).answer, true);
});

for (const command of ['hide', 'minimize']) {
  test(`a window after "${command}" is refused and stays as it is`, async (t) => {
    const window = await openPattern(t, { title: 'Not shown' });
    await window.command(command);
    const [{ answer, errors, file }] = await takeAll([{ settings: [['setWindow', window.handle]] }]);
    assert.deepEqual([answer, errors], [false, ['Window is not visible']]);
    assert.equal(fs.existsSync(file), false);
    const { visible, minimized } = await window.command('pause');
    assert.deepEqual([visible, minimized], command === 'hide' ? [false, false] : [true, true]);
  });
}

test('a window that has closed is refused', async (t) => {
  const window = await openPattern(t, { title: 'Closed' });
  const { handle } = window;
  await window.close();
  const [{ answer, errors }] = await takeAll([{ settings: [['setWindow', handle]] }]);
  assert.deepEqual([answer, errors], [false, ['Invalid window handle']]);
});

test('screenshots during a recording show the target, and the recording goes on', async (t) => {
  const window = await openPattern(t, { title: 'Recorded', x: 20, y: 20, width: 321, height: 193 });
  const { picture } = window;
  const files = [1, 2, 3].map(() => scratchFile('png'));
  const { value, log } = await scenario(
    async ({ Brisolte: Class, log: live, painted, paintedMore, waitFor }, { dir, pngs, handle, progress }) => {
      const capture = new Class();
      capture.setOutputDir(dir);
      capture.setWindow(handle);
      const before = painted(progress);
      const answers = [capture.startRecord()];
      await live.line('First Video frame arrived at: ');
      for (const file of pngs) {
        await paintedMore(progress, 20);
        await waitFor('a screenshot', () => capture.captureScreenshot(file));
        answers.push(capture.isCapturing());
      }
      await paintedMore(progress, 20);
      answers.push(capture.stopRecord(), capture.isCapturing());
      return { answers, file: capture.getSaveFilePath(), painted: [before, painted(progress)] };
    },
    {
      dir: scratchFolder(),
      pngs: files,
      handle: window.handle,
      progress: window.progress,
    },
  );
  assert.deepEqual(value.answers, [true, true, true, true, true, false]);
  assert.ok(log.errors.every((text) => text === TOO_SLOW), log.text);
  const numbers = files.map((file) => readNumber(assertShows(file, { picture, width: 321, height: 193 }), { picture }));
  assertAdvances(numbers);
  assertRecording(value, { picture });
});

test('two instances take screenshots in turn, and many leave nothing behind', async (t) => {
  const window = await openPattern(t, { title: 'Many', x: 20, y: 20, width: 320, height: 192 });
  const { value } = await scenario(
    async ({ Brisolte: Class, log, waitFor }, { handle, file }) => {
      const captures = [new Class(), new Class()];
      captures[0].setWindow(handle);
      captures[1].setMonitor(0);
      captures[0].setLogLevel(4);
      const memory = [];
      for (let i = 0; i < 30; i += 1) {
        await waitFor('a screenshot', () => captures[i % 2].captureScreenshot(file));
        memory.push(process.memoryUsage.rss());
      }
      return { grown: memory[29] - memory[9], errors: log.since().errors };
    },
    { handle: window.handle, file: scratchFile('png') },
  );
  assert.ok(value.errors.every((text) => text === TOO_SLOW), value.errors.join('\n'));
  // Each that stayed would keep two buffers, a copy and an image of the screen: more than ten megabytes.
  assert.ok(value.grown < 60e6, `twenty screenshots took ${value.grown} bytes`);
});
