// Runs in Node.js for Windows: records and takes screenshots over and over, or records once for long, and notes what the
// process holds meanwhile.
// node recorder.cjs REQUEST.json, with the fields of the request as soak.mjs writes them.

'use strict';

const { spawn } = require('node:child_process');
const { existsSync, readFileSync, rmSync, statSync, writeFileSync } = require('node:fs');
const { join } = require('node:path');
const { setTimeout: delay } = require('node:timers/promises');

const REGION = { left: 100, top: 80, width: 320, height: 180 };
const SHORT_MS = 150;
const SAMPLES = 40;

const request = JSON.parse(readFileSync(process.argv[2], 'utf8'));
const { Brisolte } = require(request.packageDir);
const { commandCosts, systemCosts, usage } = require(join(request.packageDir, 'tests', 'js', 'support', 'usage'));

async function showContent() {
  const ready = join(request.scratchDir, 'ready');
  const words = ['--x', '0', '--y', '0', '--width', '640', '--height', '360', '--fps', '30', '--ready', ready, '--seconds', '100000'];
  const content = spawn(join(request.programsDir, 'pattern.exe'), words, { stdio: 'ignore' });
  for (let waited = 0; !existsSync(ready); waited += 50) {
    if (waited > 15_000 || content.exitCode !== null) {
      throw new Error('the moving content did not start');
    }
    await delay(50);
  }
  return content;
}

function newRecorder() {
  const recorder = new Brisolte();
  recorder.setLogLevel(4);
  recorder.setRegion(REGION);
  recorder.setOutputDir(request.outputDir);
  const devices = { microphone: recorder.getMicrophones()[0].id, speaker: recorder.getSpeakers()[0].id };
  return {
    recorder,
    listen: (sound) => {
      recorder.setMicrophoneDevice(sound ? devices.microphone : '');
      recorder.setSpeakerDevice(sound ? devices.speaker : '');
    },
  };
}

function must(answer, what) {
  if (answer !== true) {
    throw new Error(`${what} was refused`);
  }
}

// A busy machine may have no picture within the service's time.
function takeScreenshot(recorder) {
  const file = join(request.outputDir, 'screenshot.png');
  for (let attempt = 1; attempt <= 10; attempt += 1) {
    if (recorder.captureScreenshot(file)) {
      rmSync(file);
      return attempt;
    }
  }
  throw new Error('captureScreenshot was refused');
}

// Every second one has sound. A screenshot precedes each.
async function recordOften() {
  const { recorder, listen } = newRecorder();
  const samples = [];
  let attempts = 0;
  const every = Math.max(1, Math.floor(request.cycles / SAMPLES));
  for (let cycle = 1; cycle <= request.cycles; cycle += 1) {
    attempts += takeScreenshot(recorder);
    listen(cycle % 2 === 0);
    must(recorder.startRecord(), 'startRecord');
    const file = recorder.getSaveFilePath();
    await delay(SHORT_MS);
    must(recorder.stopRecord(), 'stopRecord');
    if (statSync(file).size === 0) {
      throw new Error(`${file} is empty`);
    }
    if (cycle % every === 0) {
      samples.push({ at: cycle, ...usage() });
      console.log(`    ${cycle} of ${request.cycles} recordings`);
    }
    // One that is decoded is kept.
    if (cycle < request.cycles) {
      rmSync(file);
    }
  }
  const { comLetGo } = usage();
  if (comLetGo !== 0) {
    throw new Error(`the process let go of the capture service's library ${comLetGo} times`);
  }
  return { samples, file: recorder.getSaveFilePath(), attempts };
}

async function recordLong() {
  const { recorder, listen } = newRecorder();
  listen(true);
  must(recorder.startRecord(), 'startRecord');
  const began = Date.now();
  const samples = [];
  for (let sample = 1; sample <= SAMPLES; sample += 1) {
    await delay(Math.max(0, began + (sample / SAMPLES) * request.minutes * 60_000 - Date.now()));
    const minutes = (Date.now() - began) / 60_000;
    samples.push({ at: minutes, ...usage() });
    console.log(`    ${minutes.toFixed(1)} of ${request.minutes} minutes`);
  }
  const seconds = (Date.now() - began) / 1000;
  must(recorder.stopRecord(), 'stopRecord');
  return { samples, seconds, file: recorder.getSaveFilePath() };
}

async function main() {
  const content = await showContent();
  try {
    const outcome = request.cycles ? await recordOften() : await recordLong();
    const bare = request.cycles ? systemCosts(Math.max(40, request.cycles)) : { commands: commandCosts() };
    writeFileSync(request.resultFile, JSON.stringify({ ...outcome, bare }));
  } finally {
    content.kill();
  }
}

main().catch((error) => {
  // Standard error has FFmpeg's lines of every recording.
  console.log(error.message);
  process.exitCode = 1;
});
