// Runs in Node.js for Windows: starts a process that records, and ends it without a word.
// node watcher.cjs REQUEST.json, with the fields of the request as killed.mjs writes them; with `record` behind it, it is
// that process.

'use strict';

const { spawn } = require('node:child_process');
const { existsSync, openSync, readFileSync, writeFileSync } = require('node:fs');
const { join } = require('node:path');
const { setTimeout: delay } = require('node:timers/promises');

const [requestFile, role] = process.argv.slice(2);
const request = JSON.parse(readFileSync(requestFile, 'utf8'));
const inScratch = (name) => join(request.scratchDir, name);

async function until(what, condition) {
  for (let waited = 0; !condition(); waited += 20) {
    if (waited > 30_000) {
      throw new Error(`not within 30 s: ${what}`);
    }
    await delay(20);
  }
}

function record() {
  const { Brisolte } = require(request.packageDir);
  const recorder = new Brisolte();
  recorder.setOutputDir(request.outputDir);
  recorder.setRegion({ left: 0, top: 0, width: 640, height: 360 });
  if (request.picture) {
    recorder.setEncoder(request.encoder);
  } else {
    recorder.setMode(-1);
  }
  if (request.sound) {
    recorder.setMicrophoneDevice(recorder.getMicrophones()[0].id);
  }
  if (!recorder.startRecord()) {
    throw new Error('the recording did not start');
  }
  writeFileSync(inScratch('recording'), '');
  setInterval(() => recorder.isCapturing(), 1000);
}

async function watch() {
  const words = ['--width', '640', '--height', '360', '--fps', '30', '--ready', inScratch('ready')];
  const content = spawn(request.contentProgram, words, { stdio: 'ignore' });
  const log = openSync(inScratch('log'), 'w');
  await until('the moving content', () => existsSync(inScratch('ready')));
  const recorder = spawn(process.execPath, [__filename, requestFile, 'record'], { stdio: ['ignore', log, log] });
  const ended = new Promise((resolve) => recorder.on('exit', (code) => resolve(code)));
  try {
    await until('the recording', () => existsSync(inScratch('recording')) || recorder.exitCode !== null);
    const began = Date.now();
    await Promise.race([delay(1000 * request.seconds), ended]);
    if (recorder.exitCode !== null) {
      throw new Error(`the recording ended by itself:\n${readFileSync(inScratch('log'), 'utf8').slice(-2000)}`);
    }
    // Ends the process at once; nothing in it runs any more.
    recorder.kill('SIGKILL');
    const seconds = (Date.now() - began) / 1000;
    await ended;
    writeFileSync(request.resultFile, JSON.stringify({ seconds }));
  } finally {
    content.kill();
  }
}

if (role === 'record') {
  record();
} else {
  watch().catch((error) => {
    console.error(error.message);
    process.exitCode = 1;
  });
}
