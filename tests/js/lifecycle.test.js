'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { assertRecording } = require('./support/check');
const { openPattern } = require('./support/desktop');
const media = require('./support/media');
const { recordAll } = require('./support/recording');
const { scenario } = require('./support/scenario');
const { scratchFolder } = require('./support/scratch');

const SMALL = { x: 20, y: 20, width: 320, height: 192 };

test('one instance makes one recording after the other', async (t) => {
  const window = await openPattern(t, { title: 'Again', ...SMALL });
  const plan = { window, pictures: 30, settings: [['setWindow', window.handle]] };
  const { recordings } = await recordAll([plan, plan, plan]);
  recordings.forEach((recording) => assertRecording(recording, { picture: window.picture }));
});

test('two instances record two windows at once', async (t) => {
  const windows = [
    await openPattern(t, { title: 'Left', ...SMALL }),
    await openPattern(t, { title: 'Right', ...SMALL, x: 400, palette: 2 }),
  ];
  const { value } = await scenario(
    async ({ Brisolte, log, painted, paintedMore, waitFor }, targets) => {
      const captures = targets.map(({ dir, handle }) => {
        const capture = new Brisolte();
        capture.setOutputDir(dir);
        capture.setWindow(handle);
        return capture;
      });
      const before = targets.map(({ progress }) => painted(progress));
      const started = captures.map((capture) => capture.startRecord());
      const first = /First Video frame arrived at: /g;
      await waitFor('both first frames', () => log.since().text.match(first)?.length === 2);
      await Promise.all(targets.map(({ progress }) => paintedMore(progress, 70)));
      return captures.map((capture, i) => ({
        started: started[i],
        stopped: capture.stopRecord(),
        file: capture.getSaveFilePath(),
        painted: [before[i], painted(targets[i].progress)],
      }));
    },
    windows.map(({ handle, progress }) => ({ dir: scratchFolder(), handle, progress })),
  );
  value.forEach((recording, i) => {
    assert.deepEqual([recording.started, recording.stopped], [true, true]);
    assertRecording(recording, { picture: windows[i].picture });
  });
});

test('two instances that choose the same file do not bring the process down', async (t) => {
  const window = await openPattern(t, { title: 'Same file', ...SMALL });
  const { value } = await scenario(
    async ({ Brisolte, paintedMore }, { dir, handle, progress }) => {
      const captures = [new Brisolte(), new Brisolte(), new Brisolte()];
      const started = captures.map((capture) => {
        capture.setOutputDir(dir);
        capture.setWindow(handle);
        try {
          return capture.startRecord();
        } catch (error) {
          return error.message;
        }
      });
      await paintedMore(progress, 20);
      const running = captures.map((capture) => capture.isCapturing());
      return { started, running, stopped: captures.map((capture) => capture.stopRecord()) };
    },
    { dir: scratchFolder(), handle: window.handle, progress: window.progress },
  );
  assert.equal(value.started[0], true);
  assert.deepEqual(value.running, value.started.map((answer) => answer === true));
  assert.deepEqual(value.stopped, value.running);
});

test('fifty recordings that are stopped at once leave the next one whole', async (t) => {
  const window = await openPattern(t, { title: 'Fifty', ...SMALL });
  const { value } = await scenario(
    async ({ Brisolte, log, painted, paintedMore }, { dir, handle, progress }) => {
      const capture = new Brisolte();
      capture.setOutputDir(dir);
      capture.setWindow(handle);
      capture.setLogLevel(3);
      const answers = [];
      const memory = [];
      for (let i = 0; i < 50; i += 1) {
        answers.push(capture.startRecord(), capture.isCapturing(), capture.stopRecord(), capture.isCapturing());
        memory.push(process.memoryUsage.rss());
      }
      capture.setLogLevel(2);
      const mark = log.mark();
      const before = painted(progress);
      answers.push(capture.startRecord());
      await log.line('First Video frame arrived at: ', mark);
      await paintedMore(progress, 30);
      answers.push(capture.stopRecord());
      return {
        answers,
        grown: memory[49] - memory[9],
        errors: log.since().errors,
        recording: { file: capture.getSaveFilePath(), painted: [before, painted(progress)] },
      };
    },
    { dir: scratchFolder(), handle: window.handle, progress: window.progress },
  );
  assert.deepEqual(value.answers, [...Array(50).fill([true, true, true, false]).flat(), true, true]);
  assert.deepEqual(value.errors, []);
  // A recording that were not freed would keep its encoder, textures and device: megabytes each. The heap's own growth
  // with the threads of a recording is less.
  assert.ok(value.grown < 120e6, `forty recordings took ${value.grown} bytes`);
  assertRecording(value.recording, { picture: window.picture });
});

test('an instance that nobody refers to records on, to the end of the process', async (t) => {
  const window = await openPattern(t, { title: 'Unreferenced', ...SMALL });
  const { value, log } = await scenario(
    async ({ Brisolte, log: live, painted, paintedMore }, { dir, handle, progress }) => {
      let collected = false;
      const registry = new FinalizationRegistry(() => (collected = true));
      const begin = () => {
        const capture = new Brisolte();
        registry.register(capture);
        capture.setOutputDir(dir);
        capture.setWindow(handle);
        return [capture.startRecord(), capture.getSaveFilePath()];
      };
      const before = painted(progress);
      const [started, file] = begin();
      await live.line('First Video frame arrived at: ');
      for (let i = 0; i < 6; i += 1) {
        global.gc();
        await paintedMore(progress, 10);
      }
      return { started, file, collected, painted: [before, painted(progress) + 600] };
    },
    { dir: scratchFolder(), handle: window.handle, progress: window.progress },
    { nodeOptions: ['--expose-gc'] },
  );
  assert.deepEqual([value.started, value.collected], [true, false]);
  assert.ok(log.has('INFO', 'FFmpegEncoder: Trailer written successfully, output file closed'), log.text);
  const { numbers } = assertRecording(value, { picture: window.picture });
  // To the last picture, not only to the first collection.
  assert.ok(numbers.length > 20, `${numbers.length} frames of 60 pictures`);
});

test('an instance can be collected once its recording has stopped', async (t) => {
  const window = await openPattern(t, { title: 'Stopped', ...SMALL });
  const { value } = await scenario(
    async ({ Brisolte, paintedMore, waitFor }, { dir, handle, progress }) => {
      let collected = false;
      const registry = new FinalizationRegistry(() => (collected = true));
      let capture = new Brisolte();
      registry.register(capture);
      capture.setOutputDir(dir);
      capture.setWindow(handle);
      const answers = [];
      for (let i = 0; i < 2; i += 1) {
        // Both are refused, and change nothing about who holds it.
        answers.push(capture.stopRecord(), capture.startRecord(), capture.startRecord());
        await paintedMore(progress, 10);
        answers.push(capture.stopRecord());
      }
      capture = undefined;
      await waitFor('the collection', () => global.gc() ?? collected);
      return answers;
    },
    { dir: scratchFolder(), handle: window.handle, progress: window.progress },
    { nodeOptions: ['--expose-gc'] },
  );
  assert.deepEqual(value, [false, true, false, true, false, true, false, true]);
});

test('a failed start leaves nothing that keeps an instance from being collected', async () => {
  const { value } = await scenario(
    async ({ Brisolte, waitFor }, { dirs }) => {
      let collected = 0;
      const registry = new FinalizationRegistry(() => (collected += 1));
      const fail = (dir) => {
        const capture = new Brisolte();
        registry.register(capture);
        capture.setOutputDir(dir);
        capture.setWindow(1);
        return capture.startRecord();
      };
      const answers = dirs.map(fail);
      await waitFor('the collection', () => global.gc() ?? collected === 2);
      return answers;
    },
    // One each: the first may still hold the file of the second in which both start.
    { dirs: [scratchFolder(), scratchFolder()] },
    { nodeOptions: ['--expose-gc'] },
  );
  assert.deepEqual(value, [false, false]);
});

test('a process that ends while it records completes the file', async (t) => {
  const window = await openPattern(t, { title: 'Ending', ...SMALL });
  const { value, log } = await scenario(
    async ({ Brisolte, log: live, painted, paintedMore }, { dir, handle, progress }) => {
      globalThis.capture = new Brisolte();
      globalThis.capture.setOutputDir(dir);
      globalThis.capture.setWindow(handle);
      const before = painted(progress);
      globalThis.capture.startRecord();
      await live.line('First Video frame arrived at: ');
      await paintedMore(progress, 30);
      return { file: globalThis.capture.getSaveFilePath(), painted: [before, painted(progress) + 600] };
    },
    { dir: scratchFolder(), handle: window.handle, progress: window.progress },
  );
  assert.ok(log.has('INFO', 'FFmpegEncoder: Destructor completed'), log.text);
  assertRecording(value, { picture: window.picture });
});

// Loads the module in a worker thread, `times` times one after the other.
async function useInWorkers({ log, waitFor, packageFolder, supportFolder, require: load }, { body, times, terminate, ...data }) {
  const { Worker } = load('node:worker_threads');
  const outcomes = [];
  for (let i = 0; i < times; i += 1) {
    const mark = log.mark();
    const source = `(${body})(require, require('node:worker_threads')).catch((error) => { throw error; });`;
    const worker = new Worker(source, { eval: true, workerData: { packageFolder, supportFolder, ...data } });
    const outcome = { messages: [] };
    worker.on('message', (message) => outcome.messages.push(message));
    const ended = new Promise((resolve) => {
      worker.on('error', (error) => (outcome.error = error.stack));
      worker.on('exit', resolve);
    });
    if (terminate) {
      await waitFor('the worker', () => outcome.messages.length > 0 || outcome.error);
      await log.line('First Video frame arrived at: ', mark);
      await worker.terminate();
    }
    outcome.exitCode = await ended;
    outcomes.push(outcome);
  }
  return outcomes;
}

const recordInWorker = async (load, { workerData, parentPort }) => {
  const { Brisolte } = load(workerData.packageFolder);
  const capture = new Brisolte();
  capture.setOutputDir(workerData.dir);
  capture.setWindow(workerData.handle);
  const started = capture.startRecord();
  parentPort.postMessage({ started, file: capture.getSaveFilePath() });
  if (workerData.stop) {
    const { paintedMore } = load(`${workerData.supportFolder}/desktop`);
    await paintedMore(workerData.progress, 30);
    parentPort.postMessage({ stopped: capture.stopRecord(), monitors: capture.getMonitors().length });
  } else {
    globalThis.capture = capture;
    setInterval(() => {}, 1000);
  }
};

test('the module can be loaded, used and loaded again in worker threads', async (t) => {
  const window = await openPattern(t, { title: 'Worker', ...SMALL });
  const given = { body: recordInWorker.toString(), times: 3, stop: true, dir: scratchFolder() };
  const { value } = await scenario(useInWorkers, { ...given, handle: window.handle, progress: window.progress });
  for (const { messages, error, exitCode } of value) {
    assert.equal(error, undefined);
    assert.equal(exitCode, 0);
    assert.equal(messages[0].started, true);
    assert.equal(messages[1].stopped, true);
    assert.ok(messages[1].monitors > 0);
  }
  assert.ok(media.frames(value.at(-1).messages[0].file).length > 0);
});

test('a worker thread that is ended while it records completes its file', async (t) => {
  const window = await openPattern(t, { title: 'Ended worker', ...SMALL });
  const given = { body: recordInWorker.toString(), times: 2, terminate: true, dir: scratchFolder() };
  const { value } = await scenario(useInWorkers, { ...given, handle: window.handle, progress: window.progress });
  for (const { messages, error } of value) {
    assert.equal(error, undefined);
    assert.equal(messages[0].started, true);
  }
  assert.ok(media.frames(value.at(-1).messages[0].file).length > 0);
});
