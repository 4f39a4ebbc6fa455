// Runs in Node.js for Windows: records a metronome and its sound.
// node recorder.cjs REQUEST.json, with the fields of the request as sync.mjs writes them.

'use strict';

const { spawn } = require('node:child_process');
const { existsSync, readFileSync, writeFileSync } = require('node:fs');
const { setTimeout: delay } = require('node:timers/promises');

const request = JSON.parse(readFileSync(process.argv[2], 'utf8'));
const { Brisolte } = require(request.packageDir);

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
    await delay(1000 * request.seconds);
    const wallClock = (performance.now() - began) / 1000;
    recorder.stopRecord();
    writeFileSync(request.result, JSON.stringify({ file: recorder.getSaveFilePath(), wallClock }));
  } finally {
    metronome.kill();
  }
}

main().catch((error) => {
  console.error(error.message);
  process.exitCode = 1;
});
