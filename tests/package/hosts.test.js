'use strict';

// The package in the programs that load it: each version of Node.js, Deno, Bun, a program of another name, one that has Node.js
// in a library, worker threads, several places of one process.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { foreignLibrary, nodeLibrary } = require('../js/support/desktop');
const { assertWhole } = require('../js/support/media');
const { packageFolder } = require('../js/support/package');
const { isThere } = require('../js/support/processes');
const { runNode } = require('../js/support/scenario');
const { scratchFolder } = require('../js/support/scratch');
const { waitFor } = require('../js/support/wait');
const { hosts } = require('./support/hosts');

const STRANGE_NAME = 'Meine Geräte & 漢字';

/** A project with the package in it, in a folder of its own. */
async function project(name) {
  const folder = path.join(scratchFolder(), name);
  await fs.promises.cp(packageFolder, path.join(folder, 'node_modules', 'brisolte'), { recursive: true });
  // Without it Deno looks for nothing in node_modules.
  fs.writeFileSync(path.join(folder, 'package.json'), '{ "private": true, "dependencies": { "brisolte": "*" } }\n');
  return folder;
}

/** Runs a script of a project; what it printed last must be JSON, which comes back. */
async function run(folder, source, { extension = 'cjs', words = [], ...options } = {}) {
  const script = path.join(folder, `script.${extension}`);
  fs.writeFileSync(script, source);
  const { exitCode, output, errors } = await runNode([...words, script], options);
  assert.equal(exitCode, 0, `${output}\n${errors}`);
  return JSON.parse(output.trim().split('\n').at(-1));
}

/** A copy of a Node.js that shows its Node-API functions under names where no addon looks: napj_ instead of napi_. */
function copyWithoutNodeApi(host, file) {
  const image = fs.readFileSync(host);
  const headers = image.readUInt32LE(0x3c);
  const optional = headers + 24;
  const sections = Array.from({ length: image.readUInt16LE(headers + 6) }, (_, i) => {
    const at = optional + image.readUInt16LE(headers + 20) + 40 * i;
    return { begin: image.readUInt32LE(at + 12), size: image.readUInt32LE(at + 16), inFile: image.readUInt32LE(at + 20) };
  });
  const offsetOf = (address) => {
    const { begin, inFile } = sections.find((section) => address >= section.begin && address < section.begin + section.size);
    return address - begin + inFile;
  };
  const exported = offsetOf(image.readUInt32LE(optional + 112));
  const names = offsetOf(image.readUInt32LE(exported + 32));
  for (let i = 0; i < image.readUInt32LE(exported + 24); i += 1) {
    const name = offsetOf(image.readUInt32LE(names + 4 * i));
    if (image.toString('latin1', name, name + 5) === 'napi_') {
      image.write('napj_', name, 'latin1');
    }
  }
  fs.writeFileSync(file, image);
}

const USE = `function use(Brisolte) {
  const capture = new Brisolte();
  capture.setLogLevel(5);
  return [capture.getMonitors().length > 0, capture.setMode(0)];
}`;
const USED = [true, true];

for (const { name, program: host, words } of hosts) {
  test(`the program of ${name} is what it is called`, async () => {
    const { output } = await runNode(['--version'], { program: host });
    assert.ok(output.includes(name.split(' ')[1]), output);
  });

  test(`it loads in ${name}, as CommonJS and as an ES module`, async () => {
    const folder = await project(STRANGE_NAME);
    const required = `const { Brisolte } = require('brisolte'); ${USE}
      console.log(JSON.stringify([...use(Brisolte), new Brisolte().getSupportVideoCodec().length > 0]));`;
    assert.deepEqual(await run(folder, required, { program: host, words }), [...USED, true]);
    const imported = `import brisolte, { Brisolte } from 'brisolte'; ${USE}
      console.log(JSON.stringify([...use(Brisolte), brisolte.Brisolte === Brisolte]));`;
    assert.deepEqual(await run(folder, imported, { program: host, words, extension: 'mjs' }), [...USED, true]);
  });

  test(`a recording in ${name} is whole, also when the program exits meanwhile`, async () => {
    const folder = await project('recording');
    const source = `
      const { Brisolte } = require('brisolte');
      const recorder = new Brisolte();
      recorder.setLogLevel(5);
      recorder.setOutputDir(${JSON.stringify(folder)});
      const thrown = (() => { try { return recorder.setMode('0'); } catch (error) { return error instanceof Error; } })();
      const started = recorder.startRecord();
      setTimeout(() => {
        console.log(JSON.stringify([thrown, started]));
        process.exit(0);
      }, 1500);`;
    assert.deepEqual(await run(folder, source, { program: host, words }), [true, true]);
    const [file] = fs.readdirSync(folder).filter((each) => each.endsWith('.mp4'));
    assertWhole([path.join(folder, file)]);
  });

  test(`it loads in worker threads of ${name}, and again after they have ended`, async () => {
    const source = `
      const { Worker, isMainThread, parentPort } = require('node:worker_threads');
      ${USE}
      const inWorker = () => new Promise((resolve, reject) => {
        let answer;
        const worker = new Worker(__filename);
        worker.on('message', (message) => { answer = message; });
        worker.on('error', reject);
        worker.on('exit', (code) => resolve([...answer, code === 0]));
      });
      async function main() {
        const first = await inWorker();
        const second = await Promise.all([inWorker(), inWorker()]);
        const here = use(require('brisolte').Brisolte);
        return [first, ...second, here, await inWorker()];
      }
      if (isMainThread) {
        main().then((answers) => console.log(JSON.stringify(answers)));
      } else {
        parentPort.postMessage(use(require('brisolte').Brisolte));
      }`;
    const ended = [...USED, true];
    const folder = await project('workers');
    assert.deepEqual(await run(folder, source, { program: host, words }), [ended, ended, ended, USED, ended]);
  });

  test(`Recorder records in ${name}, under its own and under another name, as CommonJS and as an ES module`, async () => {
    const folder = await project(STRANGE_NAME);
    const application = path.join(folder, 'Recorder.exe');
    fs.copyFileSync(host, application);
    const record = `
      async function record(file) {
        const recorder = new Recorder({ file, stopAfter: { seconds: 1 } });
        const ended = new Promise((resolve) => recorder.once('stop', resolve));
        await recorder.start();
        const { files, reason } = await ended;
        await recorder.close();
        console.log(JSON.stringify([files.length, reason, (await Recorder.monitors()).length > 0]));
        process.exit();
      }
      record(${JSON.stringify(path.join(folder, 'talk.mp4'))});`;
    const required = `const { Recorder } = require('brisolte/recorder'); ${record}`;
    assert.deepEqual(await run(folder, required, { program: host, words }), [1, 'seconds', true]);
    fs.rmSync(path.join(folder, 'talk.mp4'));
    const imported = `import recorder, { Recorder, RecorderError } from 'brisolte/recorder';
      if (recorder.Recorder !== Recorder || !RecorderError) { process.exit(9); } ${record}`;
    assert.deepEqual(await run(folder, imported, { program: application, words, extension: 'mjs' }), [1, 'seconds', true]);
  });

  test(`a recording of Recorder outlives its application in ${name}`, async () => {
    const folder = await project('outlived');
    const file = path.join(folder, 'talk.mp4');
    const application = path.join(folder, 'Recorder.exe');
    fs.copyFileSync(host, application);
    const source = `
      const { Recorder } = require('brisolte/recorder');
      const recorder = new Recorder({ file: ${JSON.stringify(file)} });
      recorder.once('progress', () => {
        console.log(JSON.stringify(recorder.pid));
        process.kill(process.pid, 'SIGKILL');
      });
      recorder.start();`;
    const script = path.join(folder, 'script.cjs');
    fs.writeFileSync(script, source);
    const { output } = await runNode([...words, script], { program: application });
    await waitFor('the end of the process', () => !isThere(Number(output)));
    assertWhole([file]);
  });

  if (!name.startsWith('Node.js')) {
    continue;
  }

  test(`it loads in ${name} under another name, started as Electron starts itself as Node.js`, async () => {
    const folder = await project(STRANGE_NAME);
    const application = path.join(folder, 'Recorder.exe');
    fs.copyFileSync(host, application);
    const source = `const { Brisolte } = require('brisolte'); ${USE} console.log(JSON.stringify(use(Brisolte)));`;
    const env = { ...process.env, ELECTRON_RUN_AS_NODE: '1' };
    assert.deepEqual(await run(folder, source, { program: application, env }), USED);
  });

  test(`it loads in ${name} that has Node-API in a libnode.dll, and says so where there is none`, async () => {
    const folder = await project('library');
    const application = path.join(folder, 'Recorder.exe');
    copyWithoutNodeApi(host, application);
    const without = `try { require('brisolte'); } catch ({ message }) { console.log(JSON.stringify(message)); }`;
    assert.match(await run(folder, without, { program: application }), /this program does not let addons use Node-API/);
    // It is no addon, which Node.js says when it has loaded it.
    const source = `
      try { process.dlopen({ exports: {} }, ${JSON.stringify(nodeLibrary)}); } catch ({ message }) { console.error(message); }
      const { Brisolte } = require('brisolte');
      ${USE}
      console.log(JSON.stringify(use(Brisolte)));`;
    assert.deepEqual(await run(folder, source, { program: application }), USED);
  });
}

test('it works from two places in one process', async () => {
  const [one, other] = [await project('one'), await project('other')];
  const [dirOne, dirOther] = [scratchFolder(), scratchFolder()];
  const source = `
    const { createRequire } = require('node:module');
    ${USE}
    const classes = ${JSON.stringify([one, other])}.map((folder) => createRequire(folder + '/x.js')('brisolte').Brisolte);
    const recorders = classes.map((Brisolte) => new Brisolte());
    recorders.forEach((recorder, i) => recorder.setOutputDir(${JSON.stringify([dirOne, dirOther])}[i]));
    const started = recorders.map((recorder) => recorder.startRecord());
    setTimeout(() => {
      const stopped = recorders.map((recorder) => recorder.stopRecord());
      const written = recorders.map((recorder) => require('node:fs').statSync(recorder.getSaveFilePath()).size > 0);
      console.log(JSON.stringify([classes[0] !== classes[1], ...classes.map(use), started, stopped, written]));
    }, 1000);`;
  const both = [true, true];
  assert.deepEqual(await run(one, source), [true, USED, USED, both, both, both]);
});

test('it has its own FFmpeg where another addon has brought one', async () => {
  const source = `
    const { refusal } = (() => {
      try {
        return process.dlopen({ exports: {} }, ${JSON.stringify(foreignLibrary)});
      } catch (error) {
        return { refusal: error.message };
      }
    })();
    const { Brisolte } = require('brisolte');
    const encoders = new Brisolte().getSupportVideoCodec();
    console.log(JSON.stringify([/not self-register/.test(refusal), encoders.length > 0]));`;
  assert.deepEqual(await run(await project('foreign'), source), [true, true]);
});
