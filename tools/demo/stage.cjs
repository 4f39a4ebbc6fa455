// Runs in Node.js for Windows: shows something that moves, plays something to hear, and meanwhile runs programs, one after the other.
// node stage.cjs REQUEST.json, with the fields of the request as demo.mjs writes them.

'use strict';

const { spawn } = require('node:child_process');
const { existsSync, readFileSync, writeFileSync } = require('node:fs');
const { join } = require('node:path');
const { setTimeout: delay } = require('node:timers/promises');

const CONTENT = { x: 120, y: 60, width: 1040, height: 600 };
// What is played for the recording to hear: in the room that the microphone hears, and on the speaker.
const TONES = [
  { endpoint: 'Room', frequency: 440 },
  { endpoint: 'Speaker', frequency: 1000 },
];

const request = JSON.parse(readFileSync(process.argv[2], 'utf8'));
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
  const words = [...place, '--title', request.contentTitle, '--fps', '60', '--ready', ready];
  return start(request.contentProgram, words, ready, 'the moving content');
}

async function playTones() {
  for (const { endpoint, frequency } of TONES) {
    const [ready, control] = ['ready', 'control'].map((ending) => join(request.scratchDir, `${endpoint}.${ending}`));
    writeFileSync(control, `play ${request.seconds + 60}\n`);
    await start(request.toneProgram, [endpoint, String(frequency), '0.5', ready, control], ready, `the tone of ${frequency} Hz`);
  }
}

/** Runs Node.js with its output as ours; gives its exit code. */
function runNode(words) {
  const child = spawn(process.execPath, words, { stdio: ['ignore', 'inherit', 'inherit'] });
  return new Promise((resolve, reject) => {
    child.on('error', reject);
    child.on('exit', (code) => resolve(code ?? 1));
  });
}

async function main() {
  try {
    await showContent();
    if (request.audio) {
      await playTones();
    }
    for (const words of request.commands) {
      process.exitCode ||= await runNode(words);
    }
  } finally {
    started.forEach((child) => child.kill());
  }
}

main().catch((error) => {
  console.error(error.message);
  process.exitCode = 1;
});
