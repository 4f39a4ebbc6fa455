'use strict';

// A scenario runs in a Node.js process of its own: the module's log goes to that process's standard output, a crash
// ends that process alone, and how it ended is part of the outcome.

const { spawn } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');
const { Log } = require('./log');
const { scratchFile } = require('./scratch');

const CHILD = path.join(__dirname, 'scenario-child.js');

/**
 * Runs `body` in a child process and gives { value, log, exitCode }.
 *
 * `body` is passed on as text: it sees nothing but its two parameters, the tools of scenario-child.js and `given`, and
 * returns something that JSON can carry.
 * @throws {Error} with the end of the log when the body throws, the process does not end with 0, or a stand-in had something
 *   to forgive
 */
async function scenario(body, given = {}, { nodeOptions = [], within = 90000 } = {}) {
  const job = { source: body.toString(), given, result: scratchFile('result'), log: scratchFile('log') };
  const jobFile = scratchFile('job');
  fs.writeFileSync(jobFile, JSON.stringify(job));
  const { exitCode, output, errors } = await runNode([...nodeOptions, CHILD, jobFile], { log: job.log, within });
  const outcome = fs.existsSync(job.result) ? JSON.parse(fs.readFileSync(job.result, 'utf8')) : {};
  // What only a strict system would punish, the stand-ins tell there.
  const forgiven = /^standin: /m.test(errors);
  if (exitCode !== 0 || outcome.failure !== undefined || forgiven) {
    const said = [outcome.failure ?? `the process ended with ${exitCode}`, errors, output];
    throw new Error(said.map((text) => text.slice(-6000)).join('\n'));
  }
  return { value: outcome.value, log: new Log(output), exitCode };
}

/** Runs Node.js, or `program` in its place, and gives { exitCode, output, errors }; `log` is the file of its output. */
async function runNode(words, { program = process.execPath, log = scratchFile('log'), within = 90000, ...options } = {}) {
  const errors = scratchFile('err');
  const files = [fs.openSync(log, 'w'), fs.openSync(errors, 'w')];
  const child = spawn(program, words, { ...options, stdio: ['ignore', ...files] });
  files.forEach((file) => fs.closeSync(file));
  const exitCode = await endOf(child, within);
  return { exitCode, output: fs.readFileSync(log, 'utf8'), errors: fs.readFileSync(errors, 'utf8') };
}

function endOf(child, within) {
  return new Promise((resolve, reject) => {
    const limit = setTimeout(() => child.kill(), within);
    child.on('error', reject);
    child.on('exit', (code, signal) => {
      clearTimeout(limit);
      resolve(signal ? `${signal} after ${within} ms` : code);
    });
  });
}

module.exports = { runNode, scenario };
