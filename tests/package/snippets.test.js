'use strict';

// What a reader copies out of the pages does what the page says, as it stands there.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { before, describe, test } = require('node:test');
const { openPattern } = require('../js/support/desktop');
const media = require('../js/support/media');
const { packageFolder } = require('../js/support/package');
const { playTone } = require('../js/support/sound');
const { interruption, pngSize, run } = require('./support/examples');
const { blocksOf, copyPrograms, pages, projectFolder } = require('./support/snippets');

const TITLE = 'Window of the snippets';
const RECORDING = /\.(mp4|mov|avi|webm|mp3)$/;

let project;
let window;

// All of them see the same desktop, on which something moves, and are in a project that has the package.
before(async (t) => {
  window = await openPattern(t, { title: TITLE, x: 40, y: 30, width: 640, height: 360 });
  await playTone(t, { endpoint: 'Speaker', frequency: 1000 });
  project = projectFolder();
  const electron = path.join(project, 'node_modules', 'electron');
  fs.mkdirSync(electron);
  fs.copyFileSync(path.join(__dirname, 'support', 'electron.js'), path.join(electron, 'index.js'));
});

/** A folder in the project for one test, with the programs of a page in it. */
function folderFor(page) {
  const cwd = fs.mkdtempSync(path.join(project, 'of-'));
  return { cwd, programs: copyPrograms(page, cwd) };
}

/** The kinds of the streams of the one recording in a folder. */
function streamsIn(cwd) {
  const files = fs.readdirSync(cwd).filter((name) => RECORDING.test(name));
  assert.equal(files.length, 1, `${files}`);
  const { streams } = media.describe(path.join(cwd, files[0]));
  return streams.map((stream) => stream.codec_type);
}

/** Runs the nth program of a page; gives what `run` does. */
function runProgram(page, n) {
  const { cwd, programs } = folderFor(page);
  return run([programs[n - 1]], { cwd });
}

const PICTURE = ['video'];
const PICTURE_AND_SOUND = ['video', 'audio'];
const PICTURE_AND_BOTH_SOUNDS = ['video', 'audio', 'audio'];

const records = (streams) => async (page, n) => assert.deepEqual(streamsIn((await runProgram(page, n)).cwd), streams);

/**
 * Runs a function in an Electron application that has the programs of a page, and gives the application's folder. It sees nothing
 * but its parameter: `load` and the module `electron`, the pattern window's `handle` and `pictures`, which waits for some.
 */
async function inElectron(page, user) {
  const { cwd } = folderFor(page);
  const wait = JSON.stringify(path.join(__dirname, '..', 'js', 'support', 'wait'));
  fs.writeFileSync(
    path.join(cwd, 'user.cjs'),
    `const fs = require('node:fs');
    const { waitFor } = require(${wait});
    const hasSome = (name) => name.endsWith('.mp4') && fs.statSync(name).size > 2000;
    const pictures = () => waitFor('pictures', () => fs.readdirSync('.').some(hasSome));
    (${user})({ load: require, electron: require('electron'), handle: ${window.handle}, pictures });`,
  );
  await run(['user.cjs'], { cwd });
  return cwd;
}

/** What each program of a page does, in their order. */
const PROGRAMS = {
  'docs/encoders.md': [records(PICTURE)],
  'docs/api.md': [runProgram],
  'docs/electron.md': [
    async (page) => {
      const cwd = await inElectron(page, async ({ load, electron, pictures }) => {
        load('./1.cjs');
        load('./2.cjs');
        await electron.app.whenReady();
        // What a page of the application calls.
        const { recording } = electron.test.exposed;
        await recording.start();
        await pictures();
        const { file, reason } = await recording.stop();
        load('node:assert').deepEqual([reason, load('node:fs').existsSync(file)], ['requested', true]);
      });
      assert.deepEqual(streamsIn(cwd), PICTURE_AND_BOTH_SOUNDS);
    },
    // The preload script, which runs with the first.
    undefined,
    async (page) => {
      const cwd = await inElectron(page, async ({ load, electron: { app }, pictures }) => {
        load('./3.cjs');
        await pictures();
        const ended = new Promise((resolve) => app.once('will-quit', resolve));
        app.quit();
        await ended;
      });
      assert.deepEqual(streamsIn(cwd), PICTURE);
    },
    async (page) => {
      const cwd = await inElectron(page, async ({ load, electron: { test: user }, handle, pictures }) => {
        load('./4.cjs');
        user.sources.push({ id: `window:${handle}:0`, name: 'Notes', display_id: '', thumbnail: { toDataURL: () => 'data:' } });
        const [{ id, name }] = await user.invoke('recording:sources');
        load('node:assert').equal(name, 'Notes');
        await user.invoke('recording:start', id, 'default');
        await pictures();
        await user.invoke('recording:stop');
      });
      assert.deepEqual(streamsIn(cwd), PICTURE_AND_SOUND);
    },
    (page) => {
      const { cwd, programs } = folderFor(page);
      const { unpack } = require(path.join(cwd, programs[4])).packagerConfig.asar;
      assertUnpacksNatives([unpack]);
    },
  ],
  'docs/recorder.md': [records(PICTURE_AND_SOUND), records(PICTURE), records(PICTURE_AND_SOUND)],
  'docs/screenshots.md': [
    async (page, n) => assert.deepEqual(pngSize(path.join((await runProgram(page, n)).cwd, 'now.png')), [1280, 720]),
  ],
  'docs/sound.md': [records(PICTURE_AND_BOTH_SOUNDS), records(['audio'])],
};

// All that Windows loads as files must be outside of the archive.
function assertUnpacksNatives(patterns) {
  const natives = fs.readdirSync(path.join(packageFolder, 'prebuilds', 'win32-x64'));
  assert.ok(natives.length > 1);
  for (const name of natives) {
    const file = `/application/node_modules/brisolte/prebuilds/win32-x64/${name}`;
    assert.ok(patterns.some((pattern) => path.posix.matchesGlob(file, pattern)), name);
  }
}

test('every program of the pages is known here', () => {
  // Those of the README run in every host: examples-in-hosts.test.js.
  const counted = pages.filter((page) => page !== 'README.md').map((page) => [page, blocksOf(page, 'js').length]);
  const shown = Object.fromEntries(counted.filter(([, count]) => count > 0));
  assert.deepEqual(Object.fromEntries(Object.entries(PROGRAMS).map(([page, { length }]) => [page, length])), shown);
});

test('the settings of a packager in JSON unpack all that Windows loads', () => {
  const [settings, ...others] = pages.flatMap((page) => blocksOf(page, 'json'));
  assert.deepEqual(others, []);
  assertUnpacksNatives(JSON.parse(settings).build.asarUnpack);
});

const COMMAND_LINE = path.join(packageFolder, require(path.join(packageFolder, 'package.json')).bin.brisolte);

/** Each line of the pages that begins with `npx brisolte`, once, without its comment. */
function commandLines() {
  const lines = pages.flatMap((page) => blocksOf(page, 'sh').flatMap((block) => block.split('\n')));
  return new Set(lines.filter((line) => line.startsWith('npx brisolte')).map((line) => line.split('#')[0].trim()));
}

async function runCommandLine(line) {
  const [, , ...words] = line.split(/\s+/);
  const cwd = fs.mkdtempSync(path.join(project, 'of-'));
  const { output } = await run([...(words.includes('--seconds') ? [] : interruption()), COMMAND_LINE, ...words], { cwd });
  if (words[0] === 'record') {
    assert.equal(streamsIn(cwd)[0], 'video');
  } else if (words[0] === 'screenshot') {
    assert.deepEqual(pngSize(path.join(cwd, words[1])), [1280, 720]);
  } else {
    assert.match(output, words[0] === 'list' ? /^Monitors/ : /^usage: brisolte/);
  }
}

// Mostly they wait for their recordings, so that several can at once.
describe('what the pages show works as it stands there', { concurrency: 5 }, () => {
  for (const [page, checks] of Object.entries(PROGRAMS)) {
    checks.forEach((check, i) => check && test(`${page}, ${i + 1}`, () => check(page, i + 1)));
  }
  for (const line of commandLines()) {
    test(line, () => runCommandLine(line));
  }
});
