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
 * @throws {Error} with the end of the log when the body throws or the process does not end with 0
 */
async function scenario(body, given = {}, { nodeOptions = [], within = 90000 } = {}) {
  const job = { source: body.toString(), given, result: scratchFile('result'), log: scratchFile('log') };
  const [jobFile, errors] = [scratchFile('job'), scratchFile('err')];
  fs.writeFileSync(jobFile, JSON.stringify(job));
  const files = [fs.openSync(job.log, 'w'), fs.openSync(errors, 'w')];
  const child = spawn(process.execPath, [...nodeOptions, CHILD, jobFile], { stdio: ['ignore', ...files] });
  files.forEach((file) => fs.closeSync(file));
  const exitCode = await endOf(child, within);

  const log = new Log(fs.readFileSync(job.log, 'utf8'));
  const outcome = fs.existsSync(job.result) ? JSON.parse(fs.readFileSync(job.result, 'utf8')) : {};
  if (exitCode !== 0 || outcome.failure !== undefined) {
    const said = [outcome.failure ?? `the process ended with ${exitCode}`, fs.readFileSync(errors, 'utf8'), log.text];
    throw new Error(said.map((text) => text.slice(-6000)).join('\n'));
  }
  return { value: outcome.value, log, exitCode };
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

module.exports = { scenario };
