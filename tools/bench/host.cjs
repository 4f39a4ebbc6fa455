// Runs in Node.js for Windows: host.cjs REQUEST.json, with the fields of the request as pauses.mjs writes them. Uses Recorder as an
// application would and measures for how long each call keeps the event loop from turning, and how long it takes.

'use strict';

const { readFileSync, writeFileSync } = require('node:fs');
const { join } = require('node:path');
const { monitorEventLoopDelay, performance } = require('node:perf_hooks');
const { setTimeout: delay } = require('node:timers/promises');

const request = JSON.parse(readFileSync(process.argv[2], 'utf8'));
const { Recorder } = require(join(request.packageDir, 'recorder.js'));

/**
 * The longest pause of the loop during a call, the time until it resolves, and what processors the application took meanwhile,
 * in milliseconds. On a busy machine a loop pauses also because others run; a pause of its own takes a processor.
 */
async function measured(call) {
  const pauses = monitorEventLoopDelay({ resolution: 1 });
  pauses.enable();
  await delay(50);
  pauses.reset();
  const start = performance.now();
  const used = process.cpuUsage();
  await call();
  const took = performance.now() - start;
  const { user, system } = process.cpuUsage(used);
  // A pause is counted once it is over.
  await delay(20);
  pauses.disable();
  return { pauseMs: pauses.max / 1e6, tookMs: took, usedMs: (user + system) / 1000 };
}

async function main() {
  const calls = {};
  const measure = async (name, call) => (calls[name] = [...(calls[name] ?? []), await measured(call)]);
  // What the machine does to a loop that has nothing to do.
  for (let round = 0; round < request.rounds; round += 1) {
    await measure('nothing at all, for a second', () => delay(1000));
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
