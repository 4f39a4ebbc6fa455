// Runs in Node.js for Windows: shows something that moves, records it, and says where the recording is.
// node recorder.cjs REQUEST.json, with the fields of the request as demo.mjs writes them.

'use strict';

const { spawn } = require('node:child_process');
const { existsSync, readFileSync, statSync, writeFileSync } = require('node:fs');
const { join } = require('node:path');
const { setTimeout: delay } = require('node:timers/promises');

const CONTENT_TITLE = 'Brisolte demo';
const CONTENT = { x: 120, y: 60, width: 1040, height: 600 };
const DEFAULT_REGION = { left: 320, top: 180, width: 640, height: 360 };
// What is played for the recording to hear: in the room that the microphone hears, and on the speaker.
const TONES = [
  { endpoint: 'Room', frequency: 440 },
  { endpoint: 'Speaker', frequency: 1000 },
];

const request = JSON.parse(readFileSync(process.argv[2], 'utf8'));
const { Brisolte } = require(request.packageDir);

const started = [];

/** Starts a program, which ends with the demo, and waits until it has written `ready`. */
async function start(program, words, ready, what) {
  const child = spawn(program, words, { stdio: 'ignore' });
  started.push(child);
  for (let waited = 0; !existsSync(ready); waited += 50) {
    if (waited > 15_000 || child.exitCode !== null) {
      throw new Error(`${what} did not start`);
    }
    await delay(50);
  }
}

function showContent() {
  const ready = join(request.scratchDir, 'content-ready.json');
  const place = Object.entries(CONTENT).flatMap(([name, value]) => [`--${name}`, String(value)]);
  const words = [...place, '--title', CONTENT_TITLE, '--fps', '60', '--ready', ready];
  return start(request.contentProgram, words, ready, 'the moving content');
}

async function playTones() {
  for (const { endpoint, frequency } of TONES) {
    const [ready, control] = ['ready', 'control'].map((ending) => join(request.scratchDir, `${endpoint}.${ending}`));
    writeFileSync(control, `play ${request.seconds + 60}\n`);
    await start(request.toneProgram, [endpoint, String(frequency), '0.5', ready, control], ready, `the tone of ${frequency} Hz`);
  }
}

const idOfDefault = (devices, what) => {
  const device = devices.find(({ isDefault }) => isDefault) ?? devices[0];
  if (!device) {
    throw new Error(`there is no ${what}`);
  }
  return device.id;
};

function chooseTarget(recorder) {
  if (request.mode === 'region') {
    return recorder.setRegion(request.region ?? DEFAULT_REGION);
  }
  if (request.mode === 'window') {
    const title = request.window ?? CONTENT_TITLE;
    const found = recorder.getWindows().find((window) => window.title === title);
    if (!found) {
      const titles = recorder.getWindows().map((window) => `"${window.title}"`);
      throw new Error(`no window has the title "${title}"; there are: ${titles.join(', ')}`);
    }
    return recorder.setWindow(found.handle);
  }
  return recorder.setMonitor(0);
}

async function record(recorder) {
  if (!recorder.startRecord()) {
    throw new Error('the recording did not start; the lines above say why');
  }
  const file = recorder.getSaveFilePath();
  const startedAt = Date.now();
  for (let second = 1; second <= Math.ceil(request.seconds); second += 1) {
    const until = startedAt + 1000 * Math.min(second, request.seconds);
    await delay(Math.max(until - Date.now(), 0));
    const kilobytes = existsSync(file) ? Math.round(statSync(file).size / 1024) : 0;
    console.log(`    recording: ${Math.min(second, request.seconds)} s of ${request.seconds} s, ${kilobytes} kB written`);
  }
  if (!recorder.stopRecord()) {
    throw new Error('the recording did not stop; the lines above say why');
  }
  return file;
}

// The service has a fifth of a second for its picture, which a busy machine may take longer for.
function takeScreenshot(recorder, file) {
  for (let attempt = 0; attempt < 10; attempt += 1) {
    if (recorder.captureScreenshot(file)) {
      return;
    }
  }
  throw new Error('the screenshot failed; the lines above say why');
}

async function main() {
  try {
    await showContent();
    const recorder = new Brisolte();
    recorder.setLogLevel(request.verbose ? 1 : 3);
    chooseTarget(recorder);
    recorder.setFrameRate(request.fps);
    recorder.setEncoder(request.encoder);
    if (request.audio) {
      await playTones();
      recorder.setMicrophoneDevice(idOfDefault(recorder.getMicrophones(), 'microphone'));
      recorder.setSpeakerDevice(idOfDefault(recorder.getSpeakers(), 'speaker'));
    }
    if (!recorder.setOutputDir(request.outputDir)) {
      throw new Error(`${request.outputDir} is not a directory`);
    }
    const file = await record(recorder);
    if (request.screenshotFile) {
      takeScreenshot(recorder, request.screenshotFile);
    }
    writeFileSync(request.resultFile, JSON.stringify({ file }));
  } finally {
    started.forEach((child) => child.kill());
  }
}

main().catch((error) => {
  console.error(error.message);
  process.exitCode = 1;
});
