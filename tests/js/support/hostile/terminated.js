'use strict';

// Worker threads that are ended in the middle of their calls, while this thread records.

const fs = require('node:fs');
const path = require('node:path');
const { setTimeout: pause } = require('node:timers/promises');
const { Worker, isMainThread, parentPort, workerData } = require('node:worker_threads');
const { paintedMore } = require('../desktop');
const { packageFolder } = require('../package');
const { Random } = require('../random');

const AT_ONCE = 3;

// By what a worker does over and over until its end comes.
const LOOPS = {
  require: () => {},
  new: ({ Brisolte }) => new Brisolte(),
  getWindows: ({ instance }) => instance.getWindows(),
  getMicrophones: ({ instance }) => instance.getMicrophones(),
  getSupportVideoCodec: ({ instance }) => instance.getSupportVideoCodec(),
  setRegion: ({ instance }) => {
    instance.setRegion({ left: 0, top: 0, width: 64, get height() { for (;;); } }); // prettier-ignore
  },
  'an error': ({ instance }) => {
    try {
      instance.setFrameRate(0);
    } catch {
      // It is what the call is made for.
    }
  },
  captureScreenshot: ({ instance, folder }) => instance.captureScreenshot(path.join(folder, 'a.png')),
  'startRecord and stopRecord': ({ instance }) => {
    instance.startRecord();
    instance.stopRecord();
  },
};
const NAMES = Object.keys(LOOPS);

// How long after it began with its calls a worker is ended, at most. Loading takes about so long; a call may take less.
const LONGEST_MS = 250;

/**
 * Ends so many workers, each at a random moment, while an instance records.
 * @param {Function} Brisolte
 * @param {object} given
 *   seed: of what is called and when it ends; times: how many workers; scratch: a folder for files; desk: what is there, as
 *   Model takes it; progress: of the pattern window
 * @returns {Promise<object>} the recording as { started, stopped, file }, and how often each call was made and ended
 */
async function endWorkers(Brisolte, { seed, times, scratch, desk, progress }) {
  const recorder = new Brisolte();
  recorder.setOutputDir(scratch);
  recorder.setWindow(desk.window);
  const started = recorder.startRecord();
  recorder.setLogLevel(5);
  const random = new Random(seed);
  const plans = Array.from({ length: times }, (_, i) => {
    const folder = path.join(scratch, String(i));
    fs.mkdirSync(folder);
    return { name: NAMES[i % NAMES.length], after: random.below(LONGEST_MS), folder, window: desk.window };
  });
  const ended = Object.fromEntries(NAMES.map((name) => [name, 0]));
  const endNext = async () => {
    for (let plan = plans.shift(); plan; plan = plans.shift()) {
      await endInTheMiddle(plan);
      ended[plan.name] += 1;
    }
  };
  await Promise.all(Array.from({ length: AT_ONCE }, endNext));
  await paintedMore(progress, 60);
  recorder.setLogLevel(2);
  return { started, stopped: recorder.stopRecord(), file: recorder.getSaveFilePath(), ended };
}

async function endInTheMiddle(plan) {
  const worker = new Worker(__filename, { workerData: { endless: plan } });
  await new Promise((resolve, reject) => {
    worker.once('message', resolve);
    worker.once('error', reject);
  });
  await pause(plan.after);
  await worker.terminate();
}

function callEndlessly({ name, folder, window }) {
  if (name === 'require') {
    parentPort.postMessage('calls');
  }
  const { Brisolte } = require(packageFolder);
  const instance = new Brisolte();
  instance.setOutputDir(folder);
  instance.setWindow(window);
  if (name !== 'require') {
    parentPort.postMessage('calls');
  }
  for (;;) {
    LOOPS[name]({ Brisolte, instance, folder });
  }
}

if (!isMainThread && workerData?.endless) {
  callEndlessly(workerData.endless);
}

module.exports = { endWorkers };
