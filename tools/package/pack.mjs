// Making the package's one file.

import { cpSync, mkdirSync, rmSync, statSync } from 'node:fs';
import { join } from 'node:path';
import { outputOf } from '../workshop/processes.mjs';
import { buildDir, buildTree, treeDir } from '../workshop/tree.mjs';
import { collectLicences } from './licences.mjs';
import { checkNatives } from './natives.mjs';

/** Where the package's file goes. */
export const packageDir = join(treeDir, 'build', 'package');

/** Makes what the package holds beside the tree's own files: the module with its libraries, and the licences. */
export async function prepare() {
  await buildTree('windows', ['brisolte']);
  await collectLicences();
}

/**
 * Packs what has been prepared, and puts the symbols that were taken out of the module beside the package.
 * @returns {Promise<{tarball: string, size: number, unpackedSize: number, files: {path: string, size: number}[],
 *   symbols: {path: string, size: number}}>}
 */
export async function pack() {
  rmSync(packageDir, { recursive: true, force: true });
  mkdirSync(packageDir, { recursive: true });
  // Without the scripts, which would prepare again and mix their words into the list.
  const words = ['npm', 'pack', '--ignore-scripts', '--json', '--pack-destination', packageDir];
  const [{ filename, size, unpackedSize, files }] = JSON.parse(outputOf(words, { cwd: treeDir }));
  await checkNatives(files.map(({ path }) => path));
  const symbols = join(packageDir, filename.replace(/\.tgz$/, '-brisolte.node.debug'));
  cpSync(join(buildDir('windows'), 'symbols', 'brisolte.node.debug'), symbols);
  return { tarball: join(packageDir, filename), size, unpackedSize, files, symbols: { path: symbols, size: statSync(symbols).size } };
}
