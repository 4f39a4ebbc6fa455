// Folders for the time of a run. However a command ends, short of `kill -9`, they are gone with it.

import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

const folders = new Set();
process.on('exit', () => folders.forEach(removeScratch));

/** A new folder; `purpose` is part of its name. */
export function scratchFolder(purpose, parent = tmpdir()) {
  const folder = mkdtempSync(join(parent, `brisolte-${purpose}-`));
  folders.add(folder);
  return folder;
}

/** Removes a scratch folder before the run ends. */
export function removeScratch(folder) {
  // A program that has just been ended may still be closing a file in it.
  rmSync(folder, { recursive: true, force: true, maxRetries: 5 });
  folders.delete(folder);
}
