'use strict';

// What remains of an MP4 or MOV whose recorder is killed at a random moment, or that is copied while it grows.
// BRISOLTE_KILLS says how often, four times unless it does; `npm run recorder -- --kills 100` does it a hundred times.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { setTimeout: delay } = require('node:timers/promises');
const { boxesOf } = require('./support/boxes');
const { openPattern } = require('./support/desktop');
const media = require('./support/media');
const { packageFolder } = require('./support/package');
const { scratchFile, scratchFolder } = require('./support/scratch');

const { Recorder } = require(path.join(packageFolder, 'recorder.js'));

const TIMES = Number(process.env.BRISOLTE_KILLS ?? 4);
const LONGEST_MS = 6000;
const MAY_LACK_MS = 2000;
// Where nothing moves.
const STILL = { region: { left: 800, top: 400, width: 320, height: 192 } };

const RECORDINGS = {
  'a window with both sounds': (window) => ({ window: window.handle, microphone: 'default', speaker: 'default' }),
  'a window without sound': (window) => ({ window: window.handle }),
  'a screen that stands still': () => STILL,
  'a MOV with a sound': (window) => ({ window: window.handle, encoder: 'prores_ks', microphone: 'default' }),
};

/** How much of each stream is missing of a recording that has lasted so long, in milliseconds, at most. */
function lacking(file, lastedMs) {
  const { packets, sounds } = media.describe(file);
  media.frames(file, undefined, { whole: false });
  const ends = [packets.map(({ ms }) => ms), ...sounds].map((times) => Math.max(0, ...times));
  return lastedMs - Math.min(...ends);
}

/** Kills a recorder; gives how much its file lacks, and a copy of it from before. */
async function killWhileRecording(t, optionsFor) {
  const window = await openPattern(t, { title: 'Killed', x: 20, y: 20, width: 320, height: 192 });
  const recorder = new Recorder({ directory: scratchFolder(), ...optionsFor(window) });
  t.after(() => recorder.close());
  let copied;
  recorder.once('start', ({ file }) => (copied = file));
  await recorder.start();
  const began = performance.now();
  const lasted = () => performance.now() - began;
  // Until then nothing need be there.
  await delay(MAY_LACK_MS + Math.random() * (LONGEST_MS - MAY_LACK_MS));
  const copy = scratchFile(path.extname(copied).slice(1));
  fs.copyFileSync(copied, copy);
  const copiedAfter = lasted();
  const stopped = new Promise((resolve) => recorder.once('stop', resolve));
  await delay(Math.random() * 1000);
  const killedAfter = lasted();
  process.kill(recorder.pid, 'SIGKILL');
  const { files } = await stopped;
  assert.deepEqual(files, [copied]);
  const lacks = [lacking(copy, copiedAfter), lacking(files[0], killedAfter)];
  fs.rmSync(copy);
  await window.close();
  return lacks;
}

for (const [name, options] of Object.entries(RECORDINGS)) {
  test(`a recording of ${name} can be played to its last two seconds when its recorder is killed`, async (t) => {
    const lacks = [];
    for (let i = 0; i < Math.ceil(TIMES / Object.keys(RECORDINGS).length); i += 1) {
      lacks.push(...(await killWhileRecording(t, options)));
    }
    t.diagnostic(`${lacks.length / 2} times, ${Math.round(Math.max(...lacks))} ms missing at most`);
    assert.ok(Math.max(...lacks) < MAY_LACK_MS, lacks.join());
  });
}

test('a recording that is completed is an ordinary file, with or without that', async (t) => {
  const window = await openPattern(t, { title: 'Completed', x: 20, y: 20, width: 320, height: 192 });
  for (const [options, gap] of [[{}, 'free'], [{ encoder: 'prores_ks' }, 'wide']]) {
    const made = [];
    for (const safeFile of [true, false]) {
      const recorder = new Recorder({ directory: scratchFolder(), window: window.handle, microphone: 'default', safeFile, ...options });
      t.after(() => recorder.close());
      await recorder.start();
      await window.paintedMore(120);
      const { file } = await recorder.stop();
      media.assertWhole([file]);
      assert.deepEqual(fs.readdirSync(path.dirname(file)), [path.basename(file)]);
      made.push(boxesOf(fs.readFileSync(file)));
      await recorder.close();
    }
    const [safe, plain] = made.map((boxes) => boxes.map((box) => (Array.isArray(box) ? box[0] : box)));
    assert.deepEqual(safe, ['ftyp', 'moov', gap, 'mdat']);
    assert.deepEqual(plain, safe);
    assert.deepEqual(made[0][1], made[1][1]);
  }
});
