// Runs in Node.js for Windows: starts a process that records, and sees to it that the recording is not completed: ends that
// process without a word, or lets it record onto a disk that fills up.
// node watcher.cjs REQUEST.json, with the fields of the request as remains.mjs writes them; with `record` behind it, it is
// that process.

'use strict';

const { spawn } = require('node:child_process');
const { copyFileSync, existsSync, openSync, readFileSync, writeFileSync } = require('node:fs');
const { basename, join } = require('node:path');
const { setTimeout: delay } = require('node:timers/promises');

const [requestFile, role] = process.argv.slice(2);
const request = JSON.parse(readFileSync(requestFile, 'utf8'));
const inScratch = (name) => join(request.scratchDir, name);
const log = () => readFileSync(inScratch('log'), 'utf8');

async function until(what, condition, seconds = 30) {
  const end = performance.now() + 1000 * seconds;
  while (!condition()) {
    if (performance.now() > end) {
      throw new Error(`not within ${seconds} s: ${what}`);
    }
    await delay(20);
  }
}

function start() {
  const { Brisolte } = require(request.packageDir);
  const recorder = new Brisolte();
  recorder.setOutputDir(request.end === 'killed' ? request.fileDir : process.env.BRISOLTE_SMALL_DISK);
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
  return recorder;
}

async function record() {
  const recorder = start();
  const began = performance.now();
  writeFileSync(inScratch('recording'), '');
  if (request.end === 'killed') {
    setInterval(() => recorder.isCapturing(), 1000);
    return;
  }
  await until('a write that fails', () => log().includes('write frame:  Stream: '), request.seconds);
  const seconds = (performance.now() - began) / 1000;
  const answer = recorder.stopRecord();
  // The disk goes with the session.
  const file = recorder.getSaveFilePath();
  copyFileSync(file, join(request.fileDir, basename(file)));
  const errors = [...log().matchAll(/\[ERROR\] (.*)/g)].map(([, text]) => text.trim());
  writeFileSync(inScratch('stopped'), JSON.stringify({ seconds, answer, errors }));
}

async function watch() {
  const words = ['--width', '640', '--height', '360', '--fps', '30', '--ready', inScratch('ready')];
  const content = spawn(request.contentProgram, words, { stdio: 'ignore' });
  const output = openSync(inScratch('log'), 'w');
  await until('the moving content', () => existsSync(inScratch('ready')));
  const recorder = spawn(process.execPath, [__filename, requestFile, 'record'], { stdio: ['ignore', output, output] });
  const ended = new Promise((resolve) => recorder.on('exit', resolve));
  try {
    await until('the recording', () => existsSync(inScratch('recording')) || recorder.exitCode !== null);
    const told = request.end === 'killed' ? await killed(recorder, ended) : await stopped(ended);
    writeFileSync(request.resultFile, JSON.stringify(told));
  } finally {
    content.kill();
  }
}

async function killed(recorder, ended) {
  const began = performance.now();
  await Promise.race([delay(1000 * request.seconds), ended]);
  if (recorder.exitCode !== null) {
    throw new Error(`the recording ended by itself:\n${log().slice(-2000)}`);
  }
  // Ends the process at once; nothing in it runs any more.
  recorder.kill('SIGKILL');
  const seconds = (performance.now() - began) / 1000;
  await ended;
  return { seconds };
}

async function stopped(ended) {
  const code = await ended;
  if (code !== 0) {
    throw new Error(`the recording ended with ${code}:\n${log().slice(-2000)}`);
  }
  return JSON.parse(readFileSync(inScratch('stopped'), 'utf8'));
}

(role === 'record' ? record() : watch()).catch((error) => {
  console.error(error.message);
  process.exit(1);
});
