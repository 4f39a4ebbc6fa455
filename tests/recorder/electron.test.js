'use strict';

// Recorders of an Electron application, as far as a stand-in for Electron shows them.

const assert = require('node:assert/strict');
const { spawnSync } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { runsAsNode } = require('../../lib/fuses');
const { isThere } = require('../js/support/processes');
const { waitFor } = require('../js/support/wait');
const { hostOf } = require('./support/application');
const { packAsar } = require('./support/pack-asar');
const { folderOf } = require('./support/recorder');

const BEFORE_FUSES = 'dL7pKGdnNz796PbbjQWNKmHXBZaB9tsX';
const fuses = (runAsNode) => `${BEFORE_FUSES}\x01\x08${runAsNode}1001101`;
const before = ['--require', path.join(__dirname, 'support', 'electron.js')];

/** A program with this fuse. */
function programWith(t, runAsNode) {
  const program = path.join(folderOf(t), 'Application');
  fs.copyFileSync(process.execPath, program);
  fs.appendFileSync(program, fuses(runAsNode));
  return program;
}

/** An Electron application that records and then does this. */
const applicationOf = (t, runAsNode, body, options) => hostOf(t, body, options, { program: programWith(t, runAsNode), before });

/** What an application says at its end. */
async function saidBy({ ended, output }) {
  const [code] = await ended;
  assert.equal(code, 0);
  return JSON.parse(output());
}

test("the fuse is found wherever it lies in the application's program", async (t) => {
  const program = path.join(folderOf(t), 'program');
  const read = (text) => {
    fs.writeFileSync(program, text, 'latin1');
    return runsAsNode(program);
  };
  assert.deepEqual([await read(fuses('0')), await read(fuses('1')), await read(fuses('r'))], [false, true, true]);
  assert.deepEqual([await read(''), await read('no fuses'), await read(BEFORE_FUSES)], [true, true, true]);
  for (let ahead = 2 ** 20 - fuses('0').length; ahead <= 2 ** 20; ahead += 1) {
    assert.equal(await read(`${'x'.repeat(ahead)}${fuses('0')}${'x'.repeat(2 ** 20)}`), false, `${ahead} bytes ahead`);
  }
});

test('where the fuse is on, a recording is made by the program as Node.js, and outlives the application', async (t) => {
  const body = `
    const environment = require('node:fs').readFileSync('/proc/' + recorder.pid + '/environ', 'latin1').split('\\0');
    console.log(JSON.stringify([environment.includes('ELECTRON_RUN_AS_NODE=1'), require('electron').processes.length]));
    process.exit();`;
  const host = await applicationOf(t, '1', body);
  assert.deepEqual(await saidBy(host), [true, 0]);
  await waitFor('the end of the process', () => !isThere(host.recorder));
  assert.ok(fs.existsSync(host.file));
});

test('where the fuse is off, a recording is made by a process of utilityProcess', async (t) => {
  const body = `
    const { processes } = require('electron');
    const log = [];
    recorder.on('log', ({ text }) => log.push(text));
    recorder.once('progress', async () => {
      const { pid } = recorder;
      const ofElectron = processes.map((each) => [each.pid, each.serviceName]);
      const { reason, files } = await recorder.stop();
      await recorder.close();
      console.log(JSON.stringify({ pid, ofElectron, reason, files, left: processes[0].pid, log }));
    });`;
  const host = await applicationOf(t, '0', body);
  const { pid, ofElectron, reason, files, left, log } = await saidBy(host);
  assert.deepEqual(ofElectron, [[pid, 'Recorder']]);
  assert.deepEqual([pid, reason, files, left], [host.recorder, 'requested', [host.file], undefined]);
  assert.ok(log.includes('FFmpegEncoder: Trailer written successfully, output file closed'), log.join('\n'));
  assert.equal(isThere(pid), false);
});

test("sources of Electron's picker are recorded: a screen by its place, a window by its handle", async (t) => {
  const sources = [
    [{ id: 'screen:1:0', name: 'Screen 2', display_id: '2528732444' }, { monitor: 1 }],
    [{ id: 'window:42:0', name: 'Notes', display_id: '' }, { window: 42 }],
    ['window:42:1', { window: 42 }],
  ];
  const body = `
    recorder.on('log', ({ text }) => text.startsWith('settings: ') && console.log(text.slice(10)));
    recorder.stop().then(() => recorder.start()).then(() => recorder.close());`;
  for (const [source, wanted] of sources) {
    const { monitor, window } = await saidBy(await applicationOf(t, '1', body, { source, overwrite: true }));
    assert.deepEqual({ ...(window === undefined ? { monitor } : { window }) }, wanted);
  }
});

test('where the fuse is off, a recording ends with the application', async (t) => {
  const { child, file, ended, recorder } = await applicationOf(t, '0', 'setInterval(() => {}, 1000)');
  child.kill('SIGKILL');
  await ended;
  await waitFor('the end of the process', () => !isThere(recorder));
  assert.equal(fs.existsSync(file), false);
});

const LOST = {
  'dies': ['libx264', 'ERR_RECORDER_LOST', "process.kill(recorder.pid, 'SIGKILL');"],
  'hangs': ['hangsAtStop', 'ERR_RECORDER_TIMEOUT', 'recorder.stop().catch(() => {});'],
};

for (const [what, [encoder, code, act]] of Object.entries(LOST)) {
  test(`a process of utilityProcess that ${what} is told, with the end of its log`, async (t) => {
    const body = `
      recorder.once('error', ({ code, log }) => console.log(JSON.stringify([code, log.some(({ text }) => text.startsWith('settings: '))])));
      ${act}`;
    const host = await applicationOf(t, '0', body, { encoder, limits: { stop: 1000 } });
    assert.deepEqual(await saidBy(host), [code, true]);
    await waitFor('the end of the process', () => !isThere(host.recorder));
  });
}

test('the scripts may lie in an asar archive, and their processes do not stand in it', async (t) => {
  const folder = folderOf(t);
  const tree = path.join(__dirname, '..', '..');
  const names = ['index.js', 'recorder.js', ...fs.readdirSync(path.join(tree, 'lib'), { recursive: true }).map((name) => `lib/${name}`)];
  const scripts = names.filter((name) => name.endsWith('.js')).map((name) => [name, fs.readFileSync(path.join(tree, name), 'utf8')]);
  const main = `
    const { Recorder } = require('./recorder');
    Recorder.monitors().catch(({ code, message }) => console.log(JSON.stringify([code, message])));`;
  packAsar(path.join(folder, 'app.asar'), { ...Object.fromEntries(scripts), 'main.js': main });
  // Electron reads archives in each of its processes; the program that is started is this one here.
  const program = path.join(folder, 'application');
  const words = ['--require', path.join(__dirname, 'support', 'asar.js'), '--preserve-symlinks-main'];
  const quoted = [process.execPath, ...words].map((word) => `'${word}'`).join(' ');
  fs.writeFileSync(program, `#!/bin/sh\nexec ${quoted} "$@"\n`, { mode: 0o755 });
  const host = path.join(folder, 'host.js');
  fs.writeFileSync(host, `process.execPath = ${JSON.stringify(program)}; require('./app.asar/main.js');`);
  const { stdout, stderr } = spawnSync(program, [host], { encoding: 'utf8' });
  assert.equal(stdout, `${JSON.stringify(['ERR_RECORDER_LOAD', `brisolte records on Windows x64; this is ${process.platform} ${process.arch}.`])}\n`, stderr);
});

test('where the fuse is off, a recorder outside of the main process, or before it is ready, is told why not', async (t) => {
  const body = `
    const refused = () => {
      const { Recorder } = require(${JSON.stringify(path.join(__dirname, '..', '..', 'recorder.js'))});
      return Recorder.monitors().catch(({ code, message }) => [code, message]);
    };
    const electron = require('electron');
    const { utilityProcess } = electron;
    recorder.close().then(async () => {
      electron.app.isReady = false;
      const early = await refused();
      electron.utilityProcess = undefined;
      console.log(JSON.stringify([early, await refused()]));
      electron.utilityProcess = utilityProcess;
    });`;
  const said = await saidBy(await applicationOf(t, '0', body));
  const sentence = "The recorder's process could not be started: ";
  assert.deepEqual(said, [
    ['ERR_RECORDER_SPAWN', `${sentence}utilityProcess cannot be created before app is ready.`],
    ['ERR_RECORDER_SPAWN', `${sentence}the application's fuse RunAsNode is off, so that recorders work in its main process alone.`],
  ]);
});
