// What a person at the terminal sees: the name of each step, a sign of life while it runs, how long it took.

import { constants } from 'node:os';
import { endAll } from './children.mjs';

const HEARTBEAT_MS = 15_000;
const startedAt = Date.now();

// Steps within steps: only the innermost shows that it is alive.
const running = [];

const seconds = (since) => `${Math.round((Date.now() - since) / 1000)} s`;

/** A failure whose message is all a person needs; it is shown without a stack. */
export class WorkshopError extends Error {}

/**
 * Runs `work` under a visible name.
 * @template T
 * @param {string} name
 * @param {(note: (text: string) => void) => Promise<T>} work gets a function that tells where it is, shown with the heartbeat
 * @returns {Promise<T>}
 */
export async function step(name, work) {
  const since = Date.now();
  let where = '';
  console.log(`==> ${name}`);
  const self = Symbol(name);
  running.push(self);
  const heartbeat = setInterval(() => {
    if (running.at(-1) === self) {
      console.log(`    ... ${seconds(since)}${where && `: ${where}`}`);
    }
  }, HEARTBEAT_MS);
  try {
    const result = await work((text) => {
      where = text;
    });
    console.log(`    done in ${seconds(since)}`);
    return result;
  } finally {
    clearInterval(heartbeat);
    running.splice(running.indexOf(self), 1);
  }
}

// Errors whose message alone tells a person what to do: ours, and those of the words on the command line.
const isPlain = (error) => error instanceof WorkshopError || error.code?.startsWith('ERR_PARSE_ARGS_');

/** Runs a command's main routine; turns a failure into a message and an exit code, and a signal into an orderly end. */
export async function main(routine) {
  let interrupted = false;
  for (const signal of ['SIGHUP', 'SIGINT', 'SIGTERM']) {
    process.once(signal, async () => {
      interrupted = true;
      await endAll();
      process.exit(128 + constants.signals[signal]);
    });
  }
  try {
    process.exitCode = (await routine()) ?? 0;
  } catch (error) {
    if (interrupted) {
      return;
    }
    console.error(isPlain(error) ? `\n${error.message}` : error);
    console.error(`failed after ${seconds(startedAt)}`);
    process.exitCode = 1;
  }
}
