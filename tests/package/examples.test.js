'use strict';

// The examples as a user runs them: from the installed package, in a folder of the user's own.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { before, test } = require('node:test');
const { openPattern } = require('../js/support/desktop');
const media = require('../js/support/media');
const { packageFolder } = require('../js/support/package');
const { scratchFolder } = require('../js/support/scratch');
const { playTone } = require('../js/support/sound');
const { waitFor } = require('../js/support/wait');
const { example, interruption, pngSize, recorded, run } = require('./support/examples');

const TITLE = 'Window of the examples';

// All examples see the same desktop, on which something moves.
before((t) => openPattern(t, { title: TITLE, x: 40, y: 30, width: 640, height: 360 }));

test('list.js lists what there is', async () => {
  const { output } = await run([example('list.js')]);
  for (const word of ['Monitors', '1280 x 720 at 0, 0  primary', TITLE, 'Microphones', 'Speakers', 'libx264']) {
    assert.ok(output.includes(word), `${word} is not in ${output}`);
  }
});

test('record-window.js records a window', async () => {
  const { video, frames } = recorded(await run([example('record-window.js'), 'of the examples']));
  assert.deepEqual([video.width, video.height], [640, 360]);
  assert.ok(frames > 1);
});

test('record-window.js says when there is no such window', async () => {
  const { errors, recordings } = await run([example('record-window.js'), 'no such title'], { exitCode: 1 });
  assert.match(errors, /no window has "no such title" in its title/);
  assert.deepEqual(recordings, []);
});

test('record-region.js records the middle of the screen', async () => {
  const { video, frames } = recorded(await run([example('record-region.js')]));
  assert.deepEqual([video.width, video.height], [640, 360]);
  assert.ok(frames > 1);
});

test('record-screen-with-sound.js records the screen, the microphone and the speaker', async (t) => {
  await playTone(t, { endpoint: 'Speaker', frequency: 1000 });
  const { kinds, video } = recorded(await run([example('record-screen-with-sound.js')]));
  assert.deepEqual(kinds, ['video', 'audio', 'audio']);
  assert.deepEqual([video.width, video.height], [1280, 720]);
});

test('screenshot.js takes a picture of the screen, or of a window', async () => {
  const screen = await run([example('screenshot.js'), 'screen.png']);
  assert.deepEqual(pngSize(path.join(screen.cwd, 'screen.png')), [1280, 720]);
  const window = await run([example('screenshot.js'), 'window.png', TITLE]);
  assert.deepEqual(pngSize(path.join(window.cwd, 'window.png')), [640, 360]);
});

const COMMAND_LINE = path.join(packageFolder, require(path.join(packageFolder, 'package.json')).bin.brisolte);

test('npx brisolte lists what there is', async () => {
  const { output } = await run([COMMAND_LINE, 'list']);
  for (const word of ['Monitors', '1280 x 720 at 0, 0  primary', `"${TITLE}"`, 'Microphones', 'Speakers', 'libx264']) {
    assert.ok(output.includes(word), `${word} is not in ${output}`);
  }
  const lists = JSON.parse((await run([COMMAND_LINE, 'list', '--json'])).output);
  assert.deepEqual(Object.keys(lists), ['monitors', 'windows', 'microphones', 'speakers', 'encoders']);
});

test('npx brisolte records for the time it is given and shows how far it is', async () => {
  const words = ['record', '--window', TITLE, '--fps', '15', '--encoder', 'libvpx-vp9', '--seconds', '3'];
  const outcome = await run([COMMAND_LINE, ...words]);
  const { video, frames } = recorded(outcome);
  assert.deepEqual([video.codec_name, video.width, video.height], ['vp9', 640, 360]);
  assert.ok(frames > 1);
  assert.match(outcome.errors, /^recording 00:00:01, [\d.]+ k?B, \d/m);
  assert.match(outcome.errors, /^stopped at its limit of time: 00:00:03, /m);
});

test('npx brisolte records the screen, the microphone and the speaker into the file that it is given', async (t) => {
  await playTone(t, { endpoint: 'Speaker', frequency: 1000 });
  const { cwd, output } = await run([COMMAND_LINE, 'record', '--audio', '--seconds', '2', '--file', 'talk.mp4']);
  assert.equal(output.trimEnd(), path.join(cwd, 'talk.mp4'));
  const { streams } = media.describe(path.join(cwd, 'talk.mp4'));
  assert.deepEqual(streams.map((stream) => stream.codec_type), ['video', 'audio', 'audio']);
});

test('npx brisolte records until it is interrupted', async () => {
  const { frames } = recorded(await run([...interruption(), COMMAND_LINE, 'record', '--region=10,20,301,201']));
  assert.ok(frames > 1);
});

test('npx brisolte takes a screenshot', async () => {
  const { cwd, output } = await run([COMMAND_LINE, 'screenshot', 'still.png', '--window', TITLE]);
  assert.equal(output.trimEnd(), path.join(cwd, 'still.png'));
  assert.deepEqual(pngSize(path.join(cwd, 'still.png')), [640, 360]);
});

test('npx brisolte says what is wrong', async () => {
  const wrong = [
    [['record', '--window', 'no such window'], 1, /There is no window with the title "no such window"; there are: .*"Window of the examples"/],
    [['record', '--region', '1,2,3'], 2, /--region 1,2,3 is not four whole numbers/],
    [['record', '--out', 'C:\\no such folder'], 1, /Invalid or non-existent output directory: C:\\no such folder\. Give a directory that exists\./],
    [['record', '--monitor', '9'], 1, /The recording did not start\. Invalid monitor index: 9\./],
    [['record', '--unknown'], 2, /Unknown option '--unknown'/],
  ];
  for (const [words, exitCode, message] of wrong) {
    const { errors } = await run([COMMAND_LINE, ...words], { exitCode });
    assert.match(errors, message);
  }
});

test('electron-main.js records from its menu and shows where the file is', async () => {
  const cwd = scratchFolder();
  const modules = path.join(cwd, 'node_modules');
  fs.mkdirSync(path.join(modules, 'electron'), { recursive: true });
  fs.copyFileSync(path.join(__dirname, 'support', 'electron.js'), path.join(modules, 'electron', 'index.js'));
  fs.cpSync(packageFolder, path.join(modules, 'brisolte'), { recursive: true });
  fs.copyFileSync(example('electron-main.js'), path.join(cwd, 'main.js'));
  fs.writeFileSync(
    path.join(cwd, 'user.js'),
    `const fs = require('node:fs');
    const { app, test } = require('electron');
    const { waitFor } = require(${JSON.stringify(path.join(__dirname, '..', 'js', 'support', 'wait'))});
    const size = (name) => fs.statSync(name, { throwIfNoEntry: false })?.size ?? 0;
    async function record() {
      const before = fs.readdirSync('.');
      test.choose('Start');
      await waitFor('pictures', () => fs.readdirSync('.').some((name) => !before.includes(name) && size(name) > 2000));
    }
    async function use() {
      await app.whenReady();
      await record();
      test.choose('Stop');
      await waitFor('the file to be shown', () => test.asked.length > 0);
      await record();
      console.log(JSON.stringify(test.asked));
      app.quit();
      process.exit();
    }
    require('./main.js');
    use();`,
  );
  const { output } = await run(['user.js'], { cwd });
  const [[what, first]] = JSON.parse(output.split(/\r?\n/).find((line) => line.startsWith('[[')));
  assert.equal(what, 'showItemInFolder');
  // The process that records completes the second one after the application has ended.
  const whole = await waitFor('both recordings', () => {
    const files = fs.readdirSync(cwd).filter((name) => name.startsWith('Qorvex-'));
    return files.length === 2 && files.every((name) => fs.readFileSync(path.join(cwd, name)).includes('moov')) && files;
  });
  assert.ok(whole.includes(path.basename(first)));
  whole.forEach((name) => assert.equal(media.describe(path.join(cwd, name)).video.codec_name, 'h264'));
});
