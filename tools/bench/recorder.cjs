// Runs in Node.js for Windows: one recording of a moving picture, timed.
// node recorder.cjs REQUEST.json, with the fields of the request as recordings.mjs writes them. It records in a child of
// its own, whose output is the module's log, and adds what the log says to the result, and how long the system takes for the
// device that a recording makes, without the module.

'use strict';

const { spawn } = require('node:child_process');
const { closeSync, existsSync, openSync, readFileSync, writeFileSync } = require('node:fs');
const { join } = require('node:path');
const { monitorEventLoopDelay, performance } = require('node:perf_hooks');
const { setTimeout: delay } = require('node:timers/promises');

const request = JSON.parse(readFileSync(process.argv[2], 'utf8'));

const timed = (call) => {
  const start = performance.now();
  const value = call();
  return [performance.now() - start, value];
};

async function record() {
  const words = { width: 1280, height: 720, fps: 60, ready: request.ready, progress: request.progress };
  const options = Object.entries(words).flatMap(([name, value]) => [`--${name}`, String(value)]);
  const source = spawn(request.pattern, [...options, '--borderless'], { stdio: 'ignore' });
  try {
    for (let waited = 0; !existsSync(request.ready); waited += 50) {
      if (waited > 15_000) {
        throw new Error('the moving picture did not appear');
      }
      await delay(50);
    }
    const { Brisolte } = require(request.packageDir);
    const painted = () => Number(readFileSync(request.progress, 'latin1'));
    const recorder = new Brisolte();
    recorder.setOutputDir(request.outputDir);
    recorder.setMonitor(0);
    recorder.setFrameRate(request.fps);
    const before = painted();
    const [startMs, started] = timed(() => recorder.startRecord());
    if (!started) {
      throw new Error('the recording did not start');
    }
    const pauses = monitorEventLoopDelay({ resolution: 1 });
    pauses.enable();
    const used = process.cpuUsage();
    await delay(1000 * request.seconds);
    const { user, system } = process.cpuUsage(used);
    pauses.disable();
    const after = painted();
    const [stopMs] = timed(() => recorder.stopRecord());
    const longestPauseMs = pauses.max / 1e6;
    writeFileSync(request.result, JSON.stringify({ startMs, stopMs, longestPauseMs, cpuSeconds: (user + system) / 1e6, painted: after - before }));
  } finally {
    source.kill();
  }
}

async function recordInChild() {
  const log = openSync(request.log, 'w');
  const child = spawn(process.execPath, [__filename, process.argv[2], 'child'], { stdio: ['ignore', log, 'inherit'] });
  closeSync(log);
  const code = await new Promise((resolve) => child.on('exit', resolve));
  if (code !== 0) {
    throw new Error(readFileSync(request.log, 'utf8'));
  }
  const counts = /trigger count (\d+) , total frames processed: (\d+)/.exec(readFileSync(request.log, 'utf8'));
  const [delivered, recorded] = counts.slice(1).map(Number);
  const result = JSON.parse(readFileSync(request.result, 'utf8'));
  const { systemCosts } = require(join(request.packageDir, 'tests', 'js', 'support', 'usage'));
  const { D3D11CreateDeviceMilliseconds: deviceMs } = systemCosts();
  writeFileSync(request.result, JSON.stringify({ ...result, delivered, recorded, deviceMs }));
}

const work = process.argv[3] === 'child' ? record : recordInChild;
work().catch((error) => {
  console.error(error.message);
  process.exitCode = 1;
});
