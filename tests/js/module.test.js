'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { METHODS, loadSilently, packageFolder } = require('./support/package');
const { runNode, scenario } = require('./support/scenario');
const { scratchFile, scratchFolder } = require('./support/scratch');

const Brisolte = loadSilently();

test('the package exports the class and nothing else', () => {
  assert.deepEqual(Object.keys(require(packageFolder)), ['Brisolte']);
  assert.equal(typeof Brisolte, 'function');
  assert.equal(Brisolte.name, 'Capture');
});

test('the class has its methods in their order', () => {
  const names = Object.getOwnPropertyNames(Brisolte.prototype).filter((name) => name !== 'constructor');
  assert.deepEqual(names, METHODS);
  for (const name of METHODS) {
    assert.equal(typeof Brisolte.prototype[name], 'function', name);
  }
});

test('the class cannot be called without new', () => {
  for (const call of [() => Brisolte(), () => Brisolte.call({}), () => Reflect.apply(Brisolte, undefined, [1])]) {
    assert.throws(call, (error) => {
      assert.equal(error.constructor, TypeError);
      assert.equal(error.message, "Class constructors cannot be invoked without 'new'");
      return true;
    });
  }
});

test('the constructor ignores arguments', () => {
  for (const words of [[1], ['x', {}], [null, undefined, Symbol('s')]]) {
    assert.ok(new Brisolte(...words) instanceof Brisolte);
  }
});

test('a subclass works', () => {
  class Recorder extends Brisolte {}
  const recorder = new Recorder();
  assert.ok(recorder instanceof Brisolte);
  assert.equal(recorder.setFrameRate(25), true);
});

test('a method called on something else throws and does no harm', () => {
  const instance = new Brisolte();
  for (const name of METHODS) {
    for (const receiver of [undefined, null, {}, 5, Object.create(Brisolte.prototype)]) {
      assert.throws(() => Brisolte.prototype[name].call(receiver, 'x'), undefined, name);
    }
  }
  assert.equal(instance.isCapturing(), false);
});

test('a fresh instance is idle and has recorded nothing', () => {
  const instance = new Brisolte();
  assert.equal(instance.isCapturing(), false);
  assert.equal(instance.getSaveFilePath(), '');
  assert.equal(instance.stopRecord(), false);
});

test('the log level is 2 at first and shared by all instances', async () => {
  const { value } = await scenario(({ Brisolte: Capture }) => {
    const [one, other] = [new Capture(), new Capture()];
    const levels = [one.getLogLevel()];
    for (const level of [0, 1, 3, 4, 5, 2]) {
      levels.push(one.setLogLevel(level), other.getLogLevel());
    }
    return levels.map((level) => (level === undefined ? 'undefined' : level));
  });
  assert.deepEqual(value, [2, ...[0, 1, 3, 4, 5, 2].flatMap((level) => ['undefined', level])]);
});

test('the log level decides which lines are written', async () => {
  const { value } = await scenario(({ Brisolte: Capture, log }) => {
    const capture = new Capture();
    return [0, 1, 2, 3, 4, 5].map((level) => {
      capture.setLogLevel(level);
      const mark = log.mark();
      capture.setOutputDir('');
      capture.setOutputDir(process.cwd());
      const { entries } = log.since(mark);
      return entries.map((entry) => entry.level);
    });
  });
  const both = ['ERROR', 'INFO'];
  assert.deepEqual(value, [both, both, both, ['ERROR'], ['ERROR'], []]);
});

test('the log level lives as long as the process, also when only worker threads load the module', async () => {
  const program = scratchFile('js');
  fs.writeFileSync(
    program,
    `const { Worker, isMainThread, parentPort, workerData } = require('node:worker_threads');
    const inWorker = (level) => new Promise((resolve, reject) => {
      const worker = new Worker(__filename, { workerData: { level } });
      let answer;
      worker.on('message', (message) => { answer = message; });
      worker.on('error', reject);
      worker.on('exit', () => resolve(answer));
    });
    if (isMainThread) {
      inWorker(5).then((first) => inWorker().then((second) => console.log(JSON.stringify([first, second]))));
    } else {
      const { Brisolte } = require(process.env.BRISOLTE_TESTED);
      const capture = new Brisolte();
      if (workerData.level !== undefined) {
        capture.setLogLevel(workerData.level);
      }
      parentPort.postMessage(capture.getLogLevel());
    }`,
  );
  const env = { ...process.env, BRISOLTE_TESTED: packageFolder };
  const { exitCode, output, errors } = await runNode([program], { env });
  assert.deepEqual([exitCode, output.trim()], [0, '[5,5]'], errors);
});

test('instances that are dropped do not pile up before the collector looks for them', async () => {
  const { value } = await scenario(async ({ Brisolte: Capture }) => {
    let collected = 0;
    const registry = new FinalizationRegistry(() => (collected += 1));
    let most = 0;
    for (let made = 1; made <= 40; made += 1) {
      const capture = new Capture();
      registry.register(capture);
      capture.getMonitors();
      await new Promise((resolve) => setTimeout(resolve, 10));
      most = Math.max(most, made - collected);
    }
    return most;
  });
  assert.ok(value <= 20, `${value} instances of 40 at once`);
});

test('many instances may live at once and be collected', async () => {
  const { value } = await scenario(
    async ({ Brisolte: Capture, waitFor }) => {
      let collected = 0;
      const registry = new FinalizationRegistry(() => (collected += 1));
      const make = () => Array.from({ length: 12 }, () => new Capture()).forEach((capture) => registry.register(capture));
      make();
      await waitFor('the collection', () => global.gc() ?? collected === 12);
      return new Capture().isCapturing();
    },
    {},
    { nodeOptions: ['--expose-gc'] },
  );
  assert.equal(value, false);
});

// What a user's installation has of the package.
async function installPackage(folder) {
  for (const part of ['index.js', 'package.json', 'prebuilds']) {
    await fs.promises.cp(path.join(packageFolder, part), path.join(folder, part), { recursive: true });
  }
}

test('nothing in the environment changes which binary is loaded', async () => {
  const env = { ...process.env, BRISOLTE_PREBUILD: scratchFolder(), PREBUILDS_ONLY: '1', npm_config_arch: 'arm64', npm_config_platform: 'linux' };
  const { output, errors } = await runNode(['--print', `typeof require(${JSON.stringify(packageFolder)}).Brisolte`], { env });
  assert.equal(output.trim(), 'function', errors);
});

test('a binary without the class is told when the package is loaded', async () => {
  const folder = scratchFolder();
  fs.copyFileSync(path.join(packageFolder, 'index.js'), path.join(folder, 'index.js'));
  const binary = path.join(folder, 'prebuilds', 'win32-x64', 'brisolte.node');
  fs.mkdirSync(binary, { recursive: true });
  fs.writeFileSync(path.join(binary, 'index.js'), '');
  const { exitCode, errors } = await runNode(['--eval', `require(${JSON.stringify(folder)})`]);
  assert.equal(exitCode, 1);
  assert.match(errors, /Error: brisolte\.node was loaded and gave no class: this program does not let addons use Node-API/);
});

test('the package works in any folder, in an application of any name', async () => {
  const folder = path.join(scratchFolder(), 'Meine Geräte & 漢字');
  fs.mkdirSync(folder);
  await installPackage(folder);
  const application = path.join(folder, 'Recorder.exe');
  fs.copyFileSync(process.execPath, application);
  const script = scratchFile('js');
  const calls = '[capture.getMonitors().length > 0, capture.getSupportVideoCodec().length > 0, capture.setMode(0)]';
  fs.writeFileSync(
    script,
    `const { Brisolte } = require(${JSON.stringify(folder)});
    const capture = new Brisolte();
    capture.setLogLevel(5);
    console.log(JSON.stringify(${calls}));`,
  );
  const { exitCode, output, errors } = await runNode([script], { program: application });
  assert.deepEqual([exitCode, output.trim()], [0, '[true,true,true]'], errors);
});
