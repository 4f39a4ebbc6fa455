// The package as a user has it: packed, and installed into an empty folder without a network.

import { mkdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { pack, prepare } from '../package/pack.mjs';
import { outputOf } from '../workshop/processes.mjs';

let installed;

/**
 * Packs and installs the package, once a run.
 * @param {string} scratchDir an existing folder outside the tree
 * @returns {Promise<{tarball: string, symbols: string[], project: string, folder: string}>} `project` is the folder it was installed for,
 *   `folder` where it is
 */
export const installedPackage = (scratchDir) => (installed ??= install(scratchDir));

async function install(scratchDir) {
  await prepare();
  return installPackage(await pack(), scratchDir);
}

/** Installs a packed package into an empty folder there, without a network. */
export function installPackage({ tarball, symbols }, scratchDir) {
  const project = join(scratchDir, 'project');
  mkdirSync(project);
  writeFileSync(join(project, 'package.json'), '{ "private": true }\n');
  // A cache of its own has nothing that the registry would otherwise be asked for.
  const offline = ['--offline', '--cache', join(scratchDir, 'npm-cache')];
  outputOf(['npm', 'install', ...offline, '--no-audit', '--no-fund', tarball], { cwd: project });
  return { tarball, symbols: symbols.map(({ path }) => path), project, folder: join(project, 'node_modules', 'brisolte') };
}
