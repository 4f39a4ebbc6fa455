'use strict';

// The threads of one process that make random calls: the main thread and workers, each its own sequences.

const fs = require('node:fs');
const { setImmediate: turn } = require('node:timers/promises');
const { Worker, isMainThread, parentPort, workerData } = require('node:worker_threads');
const { paintedMore } = require('../desktop');
const { packageFolder } = require('../package');
const { runSequence } = require('./sequence');

/**
 * Runs sequences on each thread, and one good recording when they are through.
 * @param {Function} Brisolte
 * @param {object} given
 *   threads: [{ seeds, journal }], the first for this thread;
 *   scratch, desk: as runSequence takes them;
 *   progress: of the pattern window
 * @returns {Promise<object>} failures: [{ seed, failure }], and the recording as { started, stopped, file }
 */
async function runThreads(Brisolte, given) {
  // What is written under a relative name belongs to this run too.
  const here = `${given.scratch}\\here`;
  fs.mkdirSync(here);
  process.chdir(here);
  const [own, ...others] = given.threads;
  const alone = others.length === 0;
  const results = [...others.map((thread) => inWorker({ ...given, thread })), runSeeds(Brisolte, { ...given, thread: own, alone })];
  const failures = (await Promise.all(results)).filter(Boolean);
  return { failures, ...(await recordOnce(Brisolte, given)) };
}

async function runSeeds(Brisolte, { thread, scratch, desk, progress, alone = false }) {
  const shared = alone ? { level: new Brisolte().getLogLevel() } : {};
  const rest = () => Promise.race([paintedMore(progress, 2), turn()]);
  for (const seed of thread.seeds) {
    const last = seed === thread.seeds.at(-1);
    const failure = await runSequence(Brisolte, seed, { desk, shared, scratch, journal: thread.journal, rest, last });
    if (failure) {
      return { seed, failure, calls: fs.readFileSync(thread.journal, 'utf8') };
    }
    global.gc();
    await turn();
  }
  return undefined;
}

function inWorker(data) {
  return new Promise((resolve, reject) => {
    const worker = new Worker(__filename, { workerData: data });
    worker.on('message', resolve);
    worker.on('error', reject);
    worker.on('exit', (code) => reject(new Error(`a worker ended with ${code} before its calls did`)));
  });
}

async function recordOnce(Brisolte, { scratch, desk, progress }) {
  const folder = `${scratch}\\last`;
  fs.mkdirSync(folder);
  const capture = new Brisolte();
  capture.setOutputDir(folder);
  capture.setWindow(desk.window);
  const started = capture.startRecord();
  await paintedMore(progress, 60);
  return { started, stopped: capture.stopRecord(), file: capture.getSaveFilePath() };
}

if (!isMainThread && workerData?.thread) {
  const { Brisolte } = require(packageFolder);
  runSeeds(Brisolte, workerData).then((result) => parentPort.postMessage(result));
}

module.exports = { runThreads };
