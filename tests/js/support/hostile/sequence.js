'use strict';

// Calls in random order on several instances, each answer compared with what is documented.

const fs = require('node:fs');
const path = require('node:path');
const { PARAMETERS } = require('../documented');
const { METHODS } = require('../package');
const { Random } = require('../random');
const { Model } = require('./model');
const { anything, badPaths, booleans, number, numbers, regions, text, texts } = require('./values');

const INSTANCES = 3;
const CALLS = 60;

// How often what is called. What takes long is rare; the rest comes equally often.
const RARE = { startRecord: 0.5, captureScreenshot: 0.08, getSupportVideoCodec: 0.05, getMicrophones: 0.2, getSpeakers: 0.2 };
const OFTEN = { stopRecord: 2, isCapturing: 2, setMode: 3, setRegion: 3, setMicrophoneDevice: 0.7, setSpeakerDevice: 0.7 };
const WEIGHTS = Object.fromEntries(METHODS.map((method) => [method, RARE[method] ?? OFTEN[method] ?? 1]));

/** What each method is made for, among it what does not exist. */
function fitting({ monitor, window, microphone, speaker, badFolders }, folder) {
  const ids = ['', '', '', microphone, speaker, 'nonesuch'].map(text);
  return {
    setMode: [-1, -1, -1, 0, 1, 2].map(number),
    setMonitor: [0, 0, -1, 1, 2 ** 31 - 1].map(number),
    setMonitorByName: [text(monitor), ...texts],
    setWindow: [window, window, 0, 1].map(number),
    setRegion: regions,
    setFrameRate: [1, 15, 30, 60, 120].map(number),
    setOutputDir: [folder, folder, ...badFolders].map(text),
    setEncoder: ['libx264', 'libx264', 'mpeg4', 'libvpx', 'mjpeg', 'nonesuch', '', 'mf_h264'].map(text),
    setBitrate: [100000, 1000000, 50000000].map(number),
    setLogLevel: [0, 1, 2, 3, 4, 5].map(number),
    setMicrophoneDevice: ids,
    setSpeakerDevice: ids,
    setAudioBitrate: [1, 128000, 128000, 2 ** 31 - 1].map(number),
    setCursorCapture: booleans,
    setBorderHighlight: booleans,
    captureScreenshot: [...['a.png', 'ü 漢字.png'].map((name) => text(path.join(folder, name))), ...badPaths],
  };
}

/** A sequence of calls from its seed alone: { on, method, values, pause }. */
function planned(seed, desk, folders) {
  const random = new Random(seed);
  const made = folders.map((folder) => fitting(desk, folder));
  const missing = Object.keys(PARAMETERS).filter((method) => !(method in made[0]));
  if (missing.length > 0) {
    throw new Error(`fitting in ${__filename} has no values for ${missing}`);
  }
  const pools = { number: numbers, string: texts, boolean: booleans, object: regions };
  const valueFor = (method, on) => {
    if (random.chance(0.75)) {
      return random.of(made[on][method]);
    }
    const pool = random.chance(0.5) && method !== 'setOutputDir' ? pools[PARAMETERS[method][0]] : valuesFor(method);
    return random.of(pool);
  };
  return Array.from({ length: CALLS }, () => {
    const method = random.weighted(WEIGHTS);
    const on = random.below(INSTANCES);
    const takes = method in PARAMETERS && !random.chance(0.02);
    const more = random.chance(0.05) ? [random.of(anything), random.of(anything)] : [];
    return { on, method, values: takes ? [valueFor(method, on), ...more] : [], pause: random.chance(0.1) };
  });
}

const textOf = ({ value, error }) => (error ? `${error.constructor?.name} "${error.message}"` : JSON.stringify(value));

/** An instance whose every call is compared with the model. */
class CheckedInstance {
  constructor(instance, model, tell) {
    this.instance = instance;
    this.model = model;
    this.tell = tell;
  }

  call(method, values) {
    const [first] = values;
    this.tell(`${method}(${values.map(({ name }) => name)})`);
    const words = values.map(({ make }) => make((...call) => this.call(...call)));
    const wasCapturing = this.model.capturing;
    const seen = outcomeOf(() => this.instance[method](...words));
    const documented = this.model.documented(method, first, words);
    if (!documented.fits(seen)) {
      throw new Mismatch(`it gave ${textOf(seen)}; documented: ${documented.text}`);
    }
    this.model.follow(method, first, words, seen);
    if (method === 'startRecord' && !wasCapturing) {
      this.checkFile();
    }
  }

  checkFile() {
    const file = this.instance.getSaveFilePath();
    if (!this.model.chooses(file)) {
      throw new Mismatch(`the file is ${file}`);
    }
  }
}

class Mismatch extends Error {}

function outcomeOf(call) {
  try {
    return { value: call() };
  } catch (error) {
    // From a call within the call.
    if (error instanceof Mismatch) {
      throw error;
    }
    return { error };
  }
}

/**
 * Runs the sequence of one seed.
 * @param {Function} Brisolte
 * @param {number} seed
 * @param {object} setting
 *   desk: what is there, as Model takes it, with badFolders, which are none;
 *   shared: as Model takes it;
 *   scratch: the folder for files;
 *   journal: the file in which every call is noted before it is made;
 *   rest: gives the threads of recordings time;
 *   last: leaves a recording that runs to the end of the thread
 * @returns {Promise<string|undefined>} what went wrong
 */
async function runSequence(Brisolte, seed, { desk, shared, scratch, journal, rest, last }) {
  const noted = fs.openSync(journal, 'w');
  const tell = (line) => fs.writeSync(noted, `${line}\n`);
  tell(`seed ${seed}`);
  try {
    // Files are named by the second, so that instances in one folder would get in each other's way.
    const folders = Array.from({ length: INSTANCES }, (_, i) => path.join(scratch, `${seed}-${i}`));
    const instances = folders.map((folder, i) => {
      fs.mkdirSync(folder);
      const model = new Model({ ...desk, folders: [folder] }, shared);
      const checked = new CheckedInstance(new Brisolte(), model, (line) => tell(`${i}: ${line}`));
      checked.call('setOutputDir', [text(folder)]);
      return checked;
    });
    for (const { on, method, values, pause } of planned(seed, desk, folders)) {
      instances[on].call(method, values);
      if (pause) {
        await rest();
      }
    }
    // What still records then, records until its thread ends.
    const stopped = last ? instances.slice(1) : instances;
    stopped.forEach((instance) => instance.call(instance.model.capturing ? 'stopRecord' : 'isCapturing', []));
  } catch (error) {
    return error instanceof Mismatch ? error.message : error.stack;
  } finally {
    fs.closeSync(noted);
  }
  return undefined;
}

/**
 * Calls every method that has a parameter with everything there is, on an instance that is idle and on one that records.
 * @returns {number} how many calls were made
 * @throws {Error} for one that is not answered as documented
 */
function callWithEverything(Brisolte, { desk, scratch }) {
  let calls = 0;
  for (const recording of [false, true]) {
    const folder = path.join(scratch, String(recording));
    fs.mkdirSync(folder);
    let last;
    const checked = new CheckedInstance(new Brisolte(), new Model({ ...desk, folders: [folder] }, {}), (line) => {
      last = line;
      calls += 1;
    });
    const call = (method, ...values) => {
      try {
        checked.call(method, values);
      } catch (error) {
        throw new Error(`${recording ? 'recording' : 'idle'}: ${last}: ${error.message}`, { cause: error });
      }
    };
    call('setOutputDir', text(folder));
    for (const method of Object.keys(PARAMETERS)) {
      for (const value of valuesFor(method)) {
        call('setMode', number(-1));
        if (recording) {
          call('startRecord');
        }
        call(method, value);
      }
    }
  }
  return calls;
}

// A path that exists by chance would be recorded into.
function valuesFor(method) {
  return method === 'setOutputDir' ? anything.filter(({ make }) => typeof make() !== 'string').concat(badPaths) : anything;
}

module.exports = { callWithEverything, runSequence };
