'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { openPattern } = require('./support/desktop');
const { scenario } = require('./support/scenario');
const { scratchFolder } = require('./support/scratch');
const { systemCosts } = require('./support/usage');

// A recording asks for two factories of the capture service, and so does a screenshot.
const FACTORIES = 2;
const ROUNDS = 15;

test('recordings, screenshots and failed attempts give back all they took', async (t) => {
  const window = await openPattern(t, { title: 'Usage', x: 20, y: 20, width: 320, height: 192 });
  const { value } = await scenario(
    async ({ Brisolte, packageFolder, waitFor, paintedMore, require: load }, { dir, handle, progress, rounds }) => {
      const { usage } = load(`${packageFolder}/tests/js/support/usage`);
      const capture = new Brisolte();
      capture.setOutputDir(dir);
      const [microphone] = capture.getMicrophones();
      const [speaker] = capture.getSpeakers();
      const round = async () => {
        capture.setWindow(handle);
        capture.setMicrophoneDevice(microphone.id);
        capture.setSpeakerDevice(speaker.id);
        capture.startRecord();
        await paintedMore(progress, 3);
        capture.stopRecord();
        capture.captureScreenshot(`${dir}\\screenshot.png`);
        capture.setWindow(1);
        capture.startRecord();
        capture.setMode(-1);
        capture.setMicrophoneDevice('');
        capture.setSpeakerDevice('');
        capture.startRecord();
        capture.stopRecord();
      };
      for (let i = 0; i < 3; i += 1) {
        await round();
      }
      const before = usage();
      for (let i = 0; i < rounds; i += 1) {
        await round();
      }
      const counts = ['threads', 'gdiObjects', 'windows', 'captureObjects', 'direct3dObjects'];
      // Threads of the sound server and of timers end on their own, some time after what they served.
      const level = await waitFor(
        'what was taken to be given back',
        () => {
          const now = usage();
          return counts.every((name) => now[name] <= before[name]) && now;
        },
        10000,
      ).catch(() => usage());
      return { before, after: level, counts };
    },
    { dir: scratchFolder(), handle: window.handle, progress: window.progress, rounds: ROUNDS },
    { nodeOptions: ['--expose-gc'] },
  );
  const { before, after, counts } = value;
  assert.equal(after.comLetGo, 0, 'the capture service keeps its library');
  counts.forEach((name) => assert.ok(after[name] <= before[name], `${name}: ${before[name]}, then ${after[name]}`));
  const kept = systemCosts().RoGetActivationFactory * FACTORIES * 3 * ROUNDS;
  assert.ok(after.handles - before.handles <= kept + 4, `handles: ${before.handles}, then ${after.handles}`);
});

test('the library of the capture service is held before the service is asked for anything', async () => {
  const { value } = await scenario(
    ({ Brisolte, packageFolder, require: load }) => {
      const { usage } = load(`${packageFolder}/tests/js/support/usage`);
      const capture = new Brisolte();
      const before = usage().captureObjects;
      capture.setWindow(1);
      const taken = capture.captureScreenshot('C:\\never.png');
      return { before, taken, after: usage().captureObjects };
    },
    {},
    { nodeOptions: ['--expose-gc'] },
  );
  assert.deepEqual(value, { before: null, taken: false, after: 0 });
});
