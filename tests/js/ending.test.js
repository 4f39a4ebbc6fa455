'use strict';

// What becomes of a recording whose process or worker thread ends.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { openPattern } = require('./support/desktop');
const media = require('./support/media');
const { packageFolder } = require('./support/package');
const { runNode } = require('./support/scenario');
const { scratchFile, scratchFolder } = require('./support/scratch');

const BARE_MODULE = path.join(packageFolder, 'prebuilds', 'win32-x64', 'brisolte.node');
const PICTURES = 60;

// Records with an instance that is kept for good, and ends in the middle of it in the way that `end` says.
const RECORDER = `
  const { parentPort } = require('node:worker_threads');
  const [tested, desktop, dir, elsewhere, handle, progress, before, begun, end] = process.argv.slice(2);
  new Function('require', before)(require);
  const { Brisolte } = require(tested);
  const { paintedMore } = require(desktop);
  const recorder = new Brisolte();
  globalThis.recorder = recorder;
  recorder.setOutputDir(dir);
  recorder.setWindow(Number(handle));
  new Function('Brisolte', 'elsewhere', begun)(Brisolte, elsewhere);
  if (recorder.startRecord() !== true) {
    process.exit(9);
  }
  paintedMore(progress, ${PICTURES}).then(() => {
    parentPort?.postMessage('recorded');
    setImmediate(new Function(end));
  });
`;

// Runs that program in a worker thread, which the main thread ends in the way that `outside` says.
const MAIN_THREAD = `
  const { Worker } = require('node:worker_threads');
  const [program, outside, ...words] = process.argv.slice(2);
  const worker = new Worker(program, { argv: words });
  worker.on('message', () => new Function('worker', outside)(worker));
  worker.on('error', (error) => console.error(error));
  worker.on('exit', (code) => (process.exitCode = code));
`;

function programOf(source) {
  const file = scratchFile('js');
  fs.writeFileSync(file, source);
  return file;
}

/** Records in a process, or in a worker thread of one, until the end; gives the recording and how the process ended. */
async function recordToTheEnd(t, { tested = packageFolder, before = '', begun = '', end = '', inWorker = false, outside = '' }) {
  const window = await openPattern(t, { title: 'Ended', x: 20, y: 20, width: 320, height: 192 });
  const dir = scratchFolder();
  const desktop = path.join(__dirname, 'support', 'desktop.js');
  const words = [tested, desktop, dir, scratchFolder(), String(window.handle), window.progress, before, begun, end];
  const program = programOf(RECORDER);
  const ended = await runNode(inWorker ? [programOf(MAIN_THREAD), program, outside, ...words] : [program, ...words]);
  const [name] = fs.readdirSync(dir).filter((each) => each.endsWith('.mp4'));
  assert.ok(name, `${ended.errors}\n${ended.output}`);
  return { ...ended, file: path.join(dir, name) };
}

/** The recording can be played to its end and has what was recorded. */
function assertComplete({ file, output }) {
  assert.ok(fs.statSync(file).size > 1000, `${fs.statSync(file).size} bytes\n${output}`);
  media.assertWhole([file]);
  const { length } = media.describe(file).packets;
  assert.ok(length >= PICTURES / 12, `${length} frames of ${PICTURES} pictures`);
}

const THROW = "throw new Error('uncaught')";
const EXIT = 'process.exit(3)';

const ENDS_OF_A_PROCESS = {
  'process.exit': { end: EXIT, code: 3 },
  'an exception that nobody catches': { end: THROW, code: 1 },
  'a rejection that nobody handles': { end: "Promise.reject(new Error('unhandled'))", code: 1 },
  'having nothing more to do': { code: 0 },
  'process.exit, with the bare module': { tested: BARE_MODULE, end: EXIT, code: 3 },
  'process.exit, with a listener of its own that exits at once': {
    before: "process.on('exit', () => process.exit(5))",
    end: EXIT,
    code: 5,
  },
  'process.exit, with a listener of its own that throws': {
    before: "process.on('exit', () => { throw new Error('in a listener'); })",
    end: EXIT,
    code: 3,
  },
  'process.exit, after it removed all listeners and then began to record': {
    begun: "process.removeAllListeners('exit')",
    end: EXIT,
    code: 3,
  },
  'process.exit, with a listener of its own that begins another recording': {
    begun: `const other = new Brisolte();
      other.setOutputDir(elsewhere);
      other.setMode(-1);
      process.on('exit', () => other.startRecord());`,
    end: EXIT,
    code: 3,
  },
};

for (const [name, { code, ...how }] of Object.entries(ENDS_OF_A_PROCESS)) {
  test(`a process that ends by ${name} completes the file`, async (t) => {
    const ended = await recordToTheEnd(t, how);
    assert.equal(ended.exitCode, code, `${ended.errors}\n${ended.output}`);
    assertComplete(ended);
  });
}

const STAY = 'setInterval(() => {}, 1000)';

const ENDS_OF_A_WORKER = {
  'process.exit': { end: EXIT, code: 3 },
  'an exception that nobody catches': { end: THROW, code: 1 },
  'having nothing more to do': { code: 0 },
  'worker.terminate': { end: STAY, outside: 'worker.terminate()', code: 1 },
  'process.exit of the main thread': { end: STAY, outside: 'process.exit(4)', code: 4 },
  'an exception of the main thread': { end: STAY, outside: THROW, code: 1 },
};

for (const [name, { code, ...how }] of Object.entries(ENDS_OF_A_WORKER)) {
  test(`a worker thread that ends by ${name} completes the file`, async (t) => {
    const ended = await recordToTheEnd(t, { ...how, inWorker: true });
    assert.equal(ended.exitCode, code, `${ended.errors}\n${ended.output}`);
    assertComplete(ended);
  });
}

test('the module listens once to the end of the process, however much records', async () => {
  const program = programOf(`
    const [tested, dir] = process.argv.slice(2);
    const counts = [process.listenerCount('exit')];
    const count = () => counts.push(process.listenerCount('exit'));
    const { Brisolte } = require(tested);
    count();
    const recorders = Array.from({ length: 12 }, () => new Brisolte());
    recorders.forEach((recorder) => recorder.setMode(-1));
    recorders.forEach((recorder) => [recorder.setOutputDir(dir), recorder.startRecord(), recorder.stopRecord()]);
    count();
    process.removeAllListeners('exit');
    recorders[0].startRecord();
    recorders[0].stopRecord();
    count();
    console.log(JSON.stringify(counts));
  `);
  const { exitCode, output, errors } = await runNode([program, packageFolder, scratchFolder()]);
  assert.equal(exitCode, 0, errors);
  assert.deepEqual(JSON.parse(output.trim().split('\n').at(-1)), [0, 1, 1, 1]);
  assert.doesNotMatch(errors, /MaxListenersExceededWarning/);
});
