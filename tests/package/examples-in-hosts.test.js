'use strict';

// The examples and the README's first recordings in each of the programs that load the package.

const assert = require('node:assert/strict');
const path = require('node:path');
const { test } = require('node:test');
const { openPattern } = require('../js/support/desktop');
const { playTone } = require('../js/support/sound');
const { example, pngSize, recorded, run } = require('./support/examples');
const { hosts } = require('./support/hosts');
const { programsOfReadme } = require('./support/snippets');

const TITLE = 'Window of the hosts';

const openMovingWindow = (t) => openPattern(t, { title: TITLE, x: 40, y: 30, width: 640, height: 360 });

for (const { name, program, words } of hosts) {
  const runExample = (script, ...rest) => run([...words, example(script), ...rest], { program });

  test(`the examples run in ${name}`, async (t) => {
    await openMovingWindow(t);
    const { output } = await runExample('list.js');
    assert.ok(output.includes('1280 x 720 at 0, 0  primary'), output);
    const { video: ofWindow } = recorded(await runExample('record-window.js', 'of the hosts'));
    const { video: ofRegion } = recorded(await runExample('record-region.js'));
    const sizes = [ofWindow, ofRegion].map(({ width, height }) => [width, height]);
    assert.deepEqual(sizes, [[640, 360], [640, 360]]);
    await playTone(t, { endpoint: 'Speaker', frequency: 1000 });
    const { kinds } = recorded(await runExample('record-screen-with-sound.js'));
    assert.deepEqual(kinds, ['video', 'audio', 'audio']);
    const { cwd } = await runExample('screenshot.js', 'screen.png');
    assert.deepEqual(pngSize(path.join(cwd, 'screen.png')), [1280, 720]);
  });

  test(`the first recordings of the README work as they stand there in ${name}`, async (t) => {
    await openMovingWindow(t);
    for (const cwd of programsOfReadme()) {
      const { video, frames } = recorded(await run([...words, 'first.cjs'], { program, cwd }));
      assert.deepEqual([video.codec_name, video.width, video.height], ['h264', 1280, 720]);
      assert.ok(frames > 1);
    }
  });
}
