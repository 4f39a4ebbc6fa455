// Runs in Node.js for Windows: records a metronome and its sound.
// node recorder.cjs REQUEST.json, with the fields of the request as sync.mjs writes them.

'use strict';

const { spawn } = require('node:child_process');
const { existsSync, readFileSync, writeFileSync } = require('node:fs');
const { join } = require('node:path');
const { setTimeout: delay } = require('node:timers/promises');

const request = JSON.parse(readFileSync(process.argv[2], 'utf8'));
// Only the module of a recorder's process pauses.
const { Brisolte } = require(request.pauses > 0 ? join(request.packageDir, 'lib', 'process', 'engine.js') : request.packageDir);

/** Waits so many seconds; gives the share of a processor that this process took. */
async function loadFor(seconds) {
  const [began, before] = [performance.now(), process.cpuUsage()];
  await delay(1000 * seconds);
  const { user, system } = process.cpuUsage(before);
  return (user + system) / 1000 / (performance.now() - began);
}

/** Records for the length that was asked for, with pauses of chance lengths in between. */
async function recordFor(recorder, { seconds, pauses, longestPause }) {
  const between = seconds / (pauses + 1);
  const pausedAt = [];
  let pausedMs = 0;
  const loads = { recording: [await loadFor(between)], paused: [] };
  for (let pause = 1; pause <= pauses; pause += 1) {
    recorder.pauseRecord();
    const paused = performance.now();
    pausedAt.push(pause * between);
    loads.paused.push(await loadFor(longestPause * (0.2 + 0.8 * Math.random())));
    recorder.resumeRecord();
    pausedMs += performance.now() - paused;
    loads.recording.push(await loadFor(between));
  }
  return { pausedAt, pausedMs, load: Object.fromEntries(Object.entries(loads).map(([name, shares]) => [name, percent(shares)])) };
}

const percent = (shares) => Math.round((1000 * shares.reduce((sum, share) => sum + share, 0)) / Math.max(shares.length, 1)) / 10;

async function main() {
  const metronome = spawn(request.metronome, [request.plays, request.ready], { stdio: 'ignore' });
  try {
    for (let waited = 0; !existsSync(request.ready); waited += 50) {
      if (waited > 15_000) {
        throw new Error('the metronome did not start');
      }
      await delay(50);
    }
    const recorder = new Brisolte();
    recorder.setLogLevel(3);
    recorder.setOutputDir(request.outputDir);
    recorder.setRegion({ left: 0, top: 0, width: 320, height: 180 });
    recorder.setFrameRate(60);
    recorder.setEncoder(request.encoder);
    const named = (devices) => devices.find((device) => device.name.includes(request.hears)).id;
    if (request.microphone) {
      recorder.setMicrophoneDevice(named(recorder.getMicrophones()));
    } else {
      recorder.setSpeakerDevice(named(recorder.getSpeakers()));
    }
    if (!recorder.startRecord()) {
      throw new Error('the recording did not start');
    }
    const began = performance.now();
    const { pausedMs, ...measured } = await recordFor(recorder, request);
    const wallClock = (performance.now() - began - pausedMs) / 1000;
    recorder.stopRecord();
    writeFileSync(request.result, JSON.stringify({ file: recorder.getSaveFilePath(), wallClock, ...measured }));
  } finally {
    metronome.kill();
  }
}

main().catch((error) => {
  console.error(error.message);
  process.exitCode = 1;
});
