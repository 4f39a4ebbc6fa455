'use strict';

// Callers that do whatever can be done, in any order. A seed of random calls is made again with
// npm run hostile -- --seed N

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { openPattern } = require('./support/desktop');
const media = require('./support/media');
const { loadSilently } = require('./support/package');
const { scenario } = require('./support/scenario');
const { scratchFile, scratchFolder } = require('./support/scratch');

const FIXED_SEED = 1;
const given = (name) => (process.env[name] === undefined ? undefined : Number(process.env[name]));
const chosenSeed = given('BRISOLTE_HOSTILE_SEED');
const minutes = given('BRISOLTE_HOSTILE_MINUTES');
const randomSeed = () => Math.floor(Math.random() * 2 ** 31);

const SEQUENCES = 20;
const WORKERS = 60;

// What random calls can name.
function deskWith(window) {
  const instance = new (loadSilently())();
  const file = scratchFile('txt');
  fs.writeFileSync(file, 'x');
  return {
    window: window.handle,
    monitor: instance.getMonitors()[0].name,
    microphone: instance.getMicrophones()[0].id,
    speaker: instance.getSpeakers()[0].id,
    badFolders: [file, path.join(scratchFolder(), 'nonesuch')],
  };
}

/** Makes the calls of so many seeds from this one on, shared out to threads of one process. */
async function makeCalls(t, seed, { threads = 1, sequences = SEQUENCES } = {}) {
  const window = await openPattern(t, { title: 'Hostile', x: 20, y: 20, width: 320, height: 192 });
  const scratch = scratchFolder();
  const each = Math.ceil(sequences / threads);
  const shares = Array.from({ length: threads }, (_, thread) => ({
    seeds: Array.from({ length: each }, (_, i) => (seed + thread * each + i) % 2 ** 32),
    journal: scratchFile('journal'),
  }));
  const work = { threads: shares, scratch, desk: deskWith(window), progress: window.progress };
  let outcome;
  try {
    outcome = await scenario(
      ({ Brisolte, packageFolder, require: load }, job) =>
        load(`${packageFolder}/tests/js/support/hostile/process`).runThreads(Brisolte, job),
      work,
      { nodeOptions: ['--expose-gc'], within: 300000 },
    );
  } catch (error) {
    const calls = shares.map(({ journal }) => (fs.existsSync(journal) ? fs.readFileSync(journal, 'utf8') : ''));
    assert.fail(`${error.message}\nThe last calls of each thread:\n${calls.join('\n')}`);
  }
  const { failures, started, stopped, file } = outcome.value;
  const told = failures.map((each) => `seed ${each.seed}: ${each.failure} after\n${each.calls}`);
  assert.equal(failures.length, 0, [...told, 'The last errors of the log:', ...outcome.log.errors.slice(-20)].join('\n'));
  assert.deepEqual([started, stopped], [true, true], 'the next recording works');
  assert.ok(media.frames(file).length > 0, 'and is whole');
  fs.rmSync(scratch, { recursive: true, force: true });
}

test('every method answers everything as documented, idle and recording', async (t) => {
  const window = await openPattern(t, { title: 'Everything', x: 20, y: 20, width: 320, height: 192 });
  const { value } = await scenario(
    ({ Brisolte, packageFolder, require: load }, job) => {
      process.chdir(job.scratch);
      return load(`${packageFolder}/tests/js/support/hostile/sequence`).callWithEverything(Brisolte, job);
    },
    { desk: deskWith(window), scratch: scratchFolder() },
  );
  assert.ok(value > 2000, `only ${value} calls`);
});

test('texts of many megabytes are taken or refused like short ones', async () => {
  const { value } = await scenario(({ Brisolte }) => {
    const capture = new Brisolte();
    capture.setLogLevel(5);
    const text = 'ü'.repeat(2 ** 25);
    const answer = (method) => {
      try {
        return capture[method](text);
      } catch (error) {
        return error.constructor === Error ? 'an error' : error.stack;
      }
    };
    return {
      taken: ['setEncoder', 'setMicrophoneDevice', 'setSpeakerDevice'].map(answer),
      refused: ['setMonitorByName', 'setOutputDir', 'captureScreenshot'].map(answer),
    };
  });
  assert.deepEqual(value.taken, [true, true, true]);
  value.refused.forEach((answer) => assert.ok(answer === false || answer === 'an error', String(answer)));
});

test('a script whose time is over in the middle of a call leaves the instance usable', async () => {
  const { value } = await scenario(
    ({ Brisolte, require: load }, { dir }) => {
      const { runInNewContext } = load('node:vm');
      const capture = new Brisolte();
      capture.setOutputDir(dir);
      capture.setMode(-1);
      const timeOut = (source) => {
        try {
          return runInNewContext(source, { capture }, { timeout: 100 });
        } catch (error) {
          return error.code;
        }
      };
      const answers = [timeOut('capture.setRegion({ get left() { for (;;); }, top: 0, width: 64, height: 48 })')];
      process.removeAllListeners('exit');
      const endless = () => {
        for (;;);
      };
      process.on('newListener', endless);
      answers.push(timeOut('capture.startRecord()'), capture.isCapturing());
      process.off('newListener', endless);
      return [...answers, capture.startRecord(), capture.stopRecord(), process.listenerCount('exit')];
    },
    { dir: scratchFolder() },
  );
  const timedOut = 'ERR_SCRIPT_EXECUTION_TIMEOUT';
  assert.deepEqual(value, [timedOut, timedOut, false, true, true, 1]);
});

/** Ends so many worker threads in the middle of their calls, from this seed on. */
async function endWorkers(t, seed, times = WORKERS) {
  const window = await openPattern(t, { title: 'Ended workers', x: 20, y: 20, width: 320, height: 192 });
  const scratch = scratchFolder();
  const { value } = await scenario(
    ({ Brisolte, packageFolder, require: load }, job) =>
      load(`${packageFolder}/tests/js/support/hostile/terminated`).endWorkers(Brisolte, job),
    { seed, times, scratch, desk: deskWith(window), progress: window.progress },
    { within: 300000 },
  );
  t.diagnostic(`seed ${seed}, ended: ${JSON.stringify(value.ended)}`);
  assert.deepEqual([value.started, value.stopped], [true, true], 'the recording of the main thread goes on to its end');
  assert.equal(Object.values(value.ended).reduce((sum, count) => sum + count), times);
  media.assertWhole([value.file]);
  fs.rmSync(scratch, { recursive: true, force: true });
}

if (minutes !== undefined) {
  test(`random calls for ${minutes} minutes are answered as documented`, async (t) => {
    const end = Date.now() + minutes * 60000;
    const first = chosenSeed ?? randomSeed();
    let rounds = 0;
    for (; Date.now() < end; rounds += 1) {
      const seed = first + rounds * SEQUENCES;
      await makeCalls(t, seed, { threads: 1 + (rounds % 3) });
      await endWorkers(t, seed);
    }
    t.diagnostic(`${rounds * SEQUENCES} sequences and ${rounds * WORKERS} ended workers from seed ${first}`);
  });
} else if (chosenSeed !== undefined) {
  test(`the random calls of seed ${chosenSeed} are answered as documented`, (t) =>
    makeCalls(t, chosenSeed, { sequences: 1 }));
  test(`worker threads that are ended in the middle of their calls, from seed ${chosenSeed}, end nothing else`, (t) =>
    endWorkers(t, chosenSeed));
} else {
  const own = randomSeed();
  test(`random calls are answered as documented, from seed ${FIXED_SEED}`, (t) => makeCalls(t, FIXED_SEED));
  test(`random calls are answered as documented, from seed ${own}`, (t) => makeCalls(t, own));
  test(`random calls on three threads are answered as documented, from seed ${own + SEQUENCES}`, (t) =>
    makeCalls(t, own + SEQUENCES, { threads: 3 }));
  test(`worker threads that are ended in the middle of their calls, from seed ${own}, end nothing else`, (t) =>
    endWorkers(t, own));
}
