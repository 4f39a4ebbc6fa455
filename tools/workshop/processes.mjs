// Running other programs: with their output in a log while a step shows progress, or passed through.

import { spawnSync } from 'node:child_process';
import { closeSync, openSync, readFileSync } from 'node:fs';
import { started } from './children.mjs';
import { WorkshopError } from './report.mjs';

const lastLines = (text, count) => text.trimEnd().split('\n').slice(-count).join('\n');

/** Whether a program of this name can be started from PATH. */
export const hasProgram = (name) => spawnSync('sh', ['-c', `command -v ${name}`], { stdio: 'ignore' }).status === 0;

/**
 * Runs a program with its output in `log`.
 * @throws {WorkshopError} with the end of the log when it fails
 */
export async function runLogged(command, { log, note = () => {}, env = process.env, cwd } = {}) {
  const output = openSync(log, 'a');
  const watch = setInterval(() => note(lastLines(readFileSync(log, 'utf8'), 1).slice(0, 120)), 5000);
  try {
    const code = await exitCodeOf(started(command, { stdio: ['ignore', output, output], env, cwd }));
    if (code !== 0) {
      throw new WorkshopError(
        `${lastLines(readFileSync(log, 'utf8'), 40)}\n\n${command[0]} ended with ${code}; the whole log: ${log}`,
      );
    }
  } finally {
    clearInterval(watch);
    closeSync(output);
  }
}

/**
 * Runs a program and gives its exit code. Its output goes to this terminal, or where `stdout` and `stderr` say.
 * @param {string[]} command
 * @param {{stdout?: {write(chunk: Buffer): void}, stderr?: {write(chunk: Buffer): void}}} [options] and those of
 *   child_process.spawn
 */
export function runThrough(command, { stdout, stderr, ...options } = {}) {
  const outputs = [stdout, stderr];
  const child = started(command, { stdio: ['ignore', ...outputs.map((output) => (output ? 'pipe' : 'inherit'))], ...options });
  [child.stdout, child.stderr].forEach((stream, i) => stream?.on('data', (chunk) => outputs[i].write(chunk)));
  return exitCodeOf(child);
}

/** Runs a program and gives its standard output. @throws {WorkshopError} when it fails */
export function outputOf(command, options = {}) {
  const done = spawnSync(command[0], command.slice(1), { encoding: 'utf8', maxBuffer: 1 << 28, ...options });
  if (done.status !== 0) {
    throw new WorkshopError(`${command.join(' ')}\n${done.stderr ?? done.error}`);
  }
  return done.stdout;
}

function exitCodeOf(child) {
  return new Promise((resolve, reject) => {
    child.on('error', (error) => reject(new WorkshopError(`${child.spawnfile}: ${error.message}`)));
    child.on('close', (code, signal) => resolve(code ?? signal));
  });
}
