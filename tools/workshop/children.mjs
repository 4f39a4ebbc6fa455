// The programs that this process has started, so that they can be ended with it.

import { spawn } from 'node:child_process';
import { setTimeout as delay } from 'node:timers/promises';

// For a program that cleans up when it is asked to end.
const GRACE_MS = 10_000;

const running = new Set();

/** Starts a program. @returns {import('node:child_process').ChildProcess} */
export function started(command, options) {
  const child = spawn(command[0], command.slice(1), options);
  running.add(child);
  for (const end of ['error', 'close']) {
    child.on(end, () => running.delete(child));
  }
  return child;
}

/** Ends what still runs, and waits until it has. */
export async function endAll() {
  const ends = [...running].map((child) => {
    child.kill('SIGTERM');
    return new Promise((resolve) => child.on('close', resolve));
  });
  await Promise.race([Promise.all(ends), delay(GRACE_MS)]);
  running.forEach((child) => child.kill('SIGKILL'));
}
