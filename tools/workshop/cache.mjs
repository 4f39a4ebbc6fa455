// Things that are costly to make, kept outside the tree and shared by all clones of one user.
//
// An entry's folder carries a hash of everything it was made from, so another recipe makes another entry. It is made
// under another name and renamed when whole: a folder with an entry's name is never half made. One process makes an
// entry while others wait for it.

import { spawn } from 'node:child_process';
import { createHash } from 'node:crypto';
import { accessSync, constants, existsSync, mkdirSync, renameSync, rmSync } from 'node:fs';
import { homedir } from 'node:os';
import { join, resolve } from 'node:path';
import { step, WorkshopError } from './report.mjs';

/** The folder of all entries: `BRISOLTE_CACHE`, else `brisolte` in the user's cache folder. */
export const cacheDir = resolve(
  process.env.BRISOLTE_CACHE || join(process.env.XDG_CACHE_HOME || join(homedir(), '.cache'), 'brisolte'),
);

/** A short hash of any JSON value. */
export const keyOf = (value) => createHash('sha256').update(JSON.stringify(value)).digest('hex').slice(0, 12);

/**
 * The folder of the entry `name` made from `inputs`; made now if it is missing.
 * @param {string} name
 * @param {string} title the step's name while it is made
 * @param {unknown} inputs any JSON value; whatever may change the result
 * @param {(folder: string, note: (text: string) => void, log: string) => Promise<void>} make fills the empty folder
 */
export async function cached(name, title, inputs, make) {
  const folder = join(cacheDir, `${name}-${keyOf(inputs)}`);
  if (existsSync(folder)) {
    return folder;
  }
  await step(title, (note) =>
    withLock(
      folder,
      () => note('another run is making it; waiting'),
      async () => {
        if (existsSync(folder)) {
          return;
        }
        const partial = `${folder}.partial`;
        const log = `${folder}.log`;
        for (const leftover of [partial, log]) {
          rmSync(leftover, { recursive: true, force: true });
        }
        mkdirSync(partial, { recursive: true });
        await make(partial, note, log);
        renameSync(partial, folder);
      },
    ),
  );
  return folder;
}

/**
 * Runs `work` while no other process holds the lock of this name.
 *
 * The lock belongs to a `flock` process that lives on our pipe: however this process ends, the pipe closes, the
 * helper ends and the kernel frees the lock, so nobody has to guess whether a lock is stale.
 */
export async function withLock(name, onWait, work) {
  checkCacheDir();
  const holder = spawn('flock', [`${name}.lock`, 'sh', '-c', 'echo held; exec cat'], {
    stdio: ['pipe', 'pipe', 'inherit'],
  });
  const ended = new Promise((resolve) => holder.on('close', resolve));
  const waiting = setTimeout(onWait, 500);
  try {
    await new Promise((resolve, reject) => {
      holder.stdout.once('data', resolve);
      holder.once('error', reject);
      holder.once('close', () => reject(new WorkshopError(`${name}.lock cannot be locked`)));
    });
    clearTimeout(waiting);
    return await work();
  } finally {
    clearTimeout(waiting);
    holder.stdin.end();
    await ended;
  }
}

/** Makes the folder of all entries. @throws {WorkshopError} when it cannot be written */
export function checkCacheDir() {
  try {
    mkdirSync(cacheDir, { recursive: true });
    accessSync(cacheDir, constants.W_OK);
  } catch (error) {
    throw new WorkshopError(`The cache folder cannot be written: ${error.message}. BRISOLTE_CACHE can name another.`);
  }
}
