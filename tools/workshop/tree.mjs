// Building this tree inside the build root.

import { existsSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { basename, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { buildRoot } from './build-root.mjs';
import { cacheDir, checkCacheDir, keyOf, withLock } from './cache.mjs';
import { ffmpegLibraries, ffmpegOfTests } from './ffmpeg.mjs';
import { npmPackages } from './npm-packages.mjs';
import { runThrough } from './processes.mjs';
import { sandboxed } from './sandbox.mjs';
import { WorkshopError } from './report.mjs';

/** The folder of this clone. */
export const treeDir = fileURLToPath(new URL('../..', import.meta.url)).replace(/\/$/, '');

/** Whether a path is that of the tree or in it. */
export const isInTree = (path) => `${path}/`.startsWith(`${treeDir}/`);

/** What can be built, by name. */
export const presets = JSON.parse(readFileSync(join(treeDir, 'CMakePresets.json'), 'utf8')).buildPresets.map(({ name }) => name);

/** The build folder of a preset. */
export const buildDir = (preset) => join(treeDir, 'build', preset);

/** Runs a command in the build root with this tree writable; gives its exit code. `stdout` and `stderr` as in runThrough. */
export async function runInRoot(command, { env = {}, readable = [], writable = [], cwd = treeDir, stdout, stderr } = {}) {
  checkCacheDir();
  const ccache = join(cacheDir, 'ccache');
  mkdirSync(ccache, { recursive: true });
  const settings = {
    CMAKE_CXX_COMPILER_LAUNCHER: 'ccache',
    CCACHE_DIR: ccache,
    // Another clone of the same sources finds what this one compiled.
    CCACHE_BASEDIR: treeDir,
    CCACHE_NOHASHDIR: '1',
    ...(process.env.CCACHE_DISABLE ? { CCACHE_DISABLE: process.env.CCACHE_DISABLE } : {}),
    ...env,
  };
  const access = { readable, writable: [treeDir, ccache, ...writable] };
  return runThrough(sandboxed(await buildRoot(), command, { ...access, env: settings, cwd }), { stdout, stderr });
}

async function windowsOptions() {
  const env = { BRISOLTE_FFMPEG: await ffmpegLibraries(), BRISOLTE_FFMPEG_OF_TESTS: await ffmpegOfTests() };
  return { env, readable: Object.values(env) };
}

/** What says in which build root a build folder was configured. */
const rootNote = (folder) => join(folder, 'build-root');

/** Whether a build folder was configured in this build root. In another one the compilers may have had other names. */
export const isConfiguredIn = (folder, root) =>
  existsSync(rootNote(folder)) && readFileSync(rootNote(folder), 'utf8') === basename(root);

/** Configures and builds a preset. @throws {WorkshopError} when it does not build */
export async function buildTree(preset, targets = []) {
  await npmPackages(treeDir);
  const options = preset.endsWith('windows') ? await windowsOptions() : {};
  const run = async (...command) => {
    if ((await runInRoot(command, options)) !== 0) {
      throw new WorkshopError(`${command.join(' ')} failed; its output is above.`);
    }
  };
  const folder = buildDir(preset);
  const root = await buildRoot();
  const tellWait = () => console.log('    another run is building this tree; waiting');
  await withLock(join(cacheDir, `build-${preset}-${keyOf(treeDir)}`), tellWait, async () => {
    await run('cmake', '--preset', preset, '--log-level=WARNING', ...(isConfiguredIn(folder, root) ? [] : ['--fresh']));
    writeFileSync(rootNote(folder), basename(root));
    await run('cmake', '--build', '--preset', preset, ...targets.flatMap((target) => ['--target', target]));
  });
}
