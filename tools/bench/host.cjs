// Runs in Node.js for Windows: host.cjs REQUEST.json, with the fields of the request as pauses.mjs writes them. Uses Recorder as an
// application would and measures for how long each call keeps the event loop from turning, and how long it takes.

'use strict';

const { spawn } = require('node:child_process');
const { once } = require('node:events');
const { readFileSync, writeFileSync } = require('node:fs');
const { join } = require('node:path');
const { performance } = require('node:perf_hooks');
const { setTimeout: delay } = require('node:timers/promises');
const { LoopWatch } = require('./loop.cjs');

const request = JSON.parse(readFileSync(process.argv[2], 'utf8'));
const { Recorder } = require(join(request.packageDir, 'recorder.js'));

const loop = new LoopWatch(process.argv[2]);

/**
 * The longest pauses of the loop during a call, the time until it resolves, and what processors the application took meanwhile,
 * in milliseconds.
 */
async function measured(call) {
  await delay(50);
  loop.start();
  const start = performance.now();
  const used = process.cpuUsage();
  await call();
  const took = performance.now() - start;
  const { user, system } = process.cpuUsage(used);
  // A pause is counted once it is over.
  await delay(20);
  return { ...loop.stop(), tookMs: took, usedMs: (user + system) / 1000 };
}

async function main() {
  const calls = {};
  const measure = async (name, call) => (calls[name] = [...(calls[name] ?? []), await measured(call)]);
  // What the machine does to a loop that has nothing to do.
  for (let round = 0; round < request.rounds; round += 1) {
    await measure('nothing at all, for a second', () => delay(1000));
  }
  // Node.js starts a process by one call that returns when Windows has made it.
  for (let round = 0; round < request.rounds; round += 1) {
    await measure('a process of Node.js, started and ended', () => once(spawn(process.execPath, ['-e', ''], { stdio: 'ignore' }), 'exit'));
  }
  await measure('the first call, which starts the shared process', () => Recorder.monitors());
  // In a row, so that the shared process does not end in between.
  for (let round = 0; round < request.rounds; round += 1) {
    for (const name of ['monitors', 'windows', 'microphones', 'speakers', 'encoders']) {
      await measure(name, () => Recorder[name]());
    }
    await measure('screenshot', () => Recorder.screenshot({}, join(request.outputDir, 'screen.png')));
  }
  for (let round = 0; round < request.rounds; round += 1) {
    const recorder = new Recorder({ directory: request.outputDir, microphone: 'default', speaker: 'default' });
    await measure('start, with the start of its process', () => recorder.start());
    await measure('a second of recording', () => delay(1000));
    await measure('stop', () => recorder.stop());
    await measure('start, in a process that is there', () => recorder.start());
    await measure('stop', () => recorder.stop());
    await recorder.close();
  }
  writeFileSync(request.result, JSON.stringify(calls));
}

main().catch((error) => {
  console.error(error.message);
  process.exitCode = 1;
});
