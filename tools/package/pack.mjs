// Making the package's one file.

import { cpSync, mkdirSync, readdirSync, readFileSync, renameSync, rmSync, statSync, writeFileSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { ffmpegLibraries } from '../workshop/ffmpeg.mjs';
import { outputOf } from '../workshop/processes.mjs';
import { scratchFolder } from '../workshop/scratch.mjs';
import { buildDir, buildTree, treeDir } from '../workshop/tree.mjs';
import { collectLicences } from './licences.mjs';
import { checkNatives } from './natives.mjs';

/** Where the file of the package with FFmpeg under a licence goes. */
const packageDirOf = (licence) => join(treeDir, 'build', licence === 'gpl' ? 'package' : 'package-lgpl');

/** Makes what the package holds beside the tree's own files: the module with its libraries, and the licences. */
export async function prepare() {
  await buildTree('windows', ['brisolte']);
  await collectLicences(join(treeDir, 'licenses'), 'gpl');
}

/**
 * Packs what has been prepared, and puts the symbols that were taken out of the modules beside the package.
 * @param {'gpl' | 'lgpl'} [licence] of the FFmpeg in it
 * @returns {Promise<{tarball: string, size: number, unpackedSize: number, files: {path: string, size: number}[],
 *   symbols: {path: string, size: number}[]}>}
 */
export async function pack(licence = 'gpl') {
  const packageDir = packageDirOf(licence);
  rmSync(packageDir, { recursive: true, force: true });
  mkdirSync(packageDir, { recursive: true });
  const folder = licence === 'gpl' ? treeDir : await lgplFolder();
  const [{ filename, size, unpackedSize, files }] = npmPack(folder, '--pack-destination', packageDir);
  await checkNatives(files.map(({ path }) => path), folder);
  const name = licence === 'gpl' ? filename : filename.replace(/^brisolte-/, 'brisolte-lgpl-');
  renameSync(join(packageDir, filename), join(packageDir, name));
  const symbols = ['brisolte', 'recorder'].map((module) => {
    const path = join(packageDir, name.replace(/\.tgz$/, `-${module}.node.debug`));
    cpSync(join(buildDir('windows'), 'symbols', `${module}.node.debug`), path);
    return { path, size: statSync(path).size };
  });
  return { tarball: join(packageDir, name), size, unpackedSize, files, symbols };
}

// Without the scripts, which would prepare again and mix their words into the list.
const npmPack = (cwd, ...words) => JSON.parse(outputOf(['npm', 'pack', '--ignore-scripts', '--json', ...words], { cwd }));

/** A folder with what the package holds when its FFmpeg is under the LGPL. */
async function lgplFolder() {
  const folder = scratchFolder('lgpl');
  const natives = join('prebuilds', 'win32-x64');
  const [{ files }] = npmPack(treeDir, '--dry-run');
  const same = files.map(({ path }) => path).filter((path) => !path.startsWith('licenses/') && !path.endsWith('.dll'));
  for (const path of same) {
    mkdirSync(join(folder, dirname(path)), { recursive: true });
    cpSync(join(treeDir, path), join(folder, path));
  }
  const libraries = join(await ffmpegLibraries('lgpl'), 'bin');
  const names = readdirSync(libraries).filter((name) => name.endsWith('.dll'));
  names.forEach((name) => cpSync(join(libraries, name), join(folder, natives, name)));
  await collectLicences(join(folder, 'licenses'), 'lgpl');
  const description = JSON.parse(readFileSync(join(treeDir, 'package.json'), 'utf8'));
  const ofLgpl = { ...description, license: 'MIT AND LGPL-2.1-or-later' };
  writeFileSync(join(folder, 'package.json'), `${JSON.stringify(ofLgpl, undefined, 2)}\n`);
  return folder;
}
