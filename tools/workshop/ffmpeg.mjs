// FFmpeg for Windows, from Debian's source tarballs: the libraries the product ships, and the programs of its tests.

import { mkdirSync, readFileSync, rmSync } from 'node:fs';
import { dirname, relative } from 'node:path';
import { fileURLToPath } from 'node:url';
import { buildRoot, packageVersions } from './build-root.mjs';
import { cached, cacheDir } from './cache.mjs';
import { runLogged } from './processes.mjs';
import { sandboxed } from './sandbox.mjs';

const PACKAGES = ['ffmpeg', 'lame', 'libvpx', 'x264', 'x265'];
// What of the build root gets into the results; another version of Wine, say, is no reason to build them again.
const TOOLCHAIN = ['g++-mingw-w64-x86-64-posix', 'mingw-w64-x86-64-dev', 'nasm', 'libffmpeg-nvenc-dev'];
const recipe = (name) => fileURLToPath(new URL(`recipes/${name}`, import.meta.url));

/** FFmpeg's shared libraries: `bin` with the DLLs, `lib` and `include`. */
export const ffmpegLibraries = async () =>
  byRecipe('ffmpeg', 'FFmpeg libraries for Windows', [`${await ffmpegSources()}/ffmpeg`, await codecLibraries()]);

/**
 * FFmpeg for the tests, apart from the product's: `bin` with `ffmpeg.exe` and `ffprobe.exe`, which read recordings back,
 * `lib` with static libraries, and `include`.
 */
export const ffmpegOfTests = async () =>
  byRecipe('ffmpeg-tools', 'FFmpeg for the tests', [`${await ffmpegSources()}/ffmpeg`, await codecLibraries()]);

const codecLibraries = async () =>
  byRecipe('codec-libraries', 'x264, x265, libvpx and LAME for Windows', [await ffmpegSources()]);

/** The sources of FFmpeg and its codec libraries, a folder each. */
export const ffmpegSources = () =>
  byRecipe('fetch-sources', `Source tarballs: ${PACKAGES.join(', ')}`, [], (folder) => [folder, ...PACKAGES]);

/** The entry that the recipe of this name fills; a recipe takes the folders it needs, then the folder to fill. */
async function byRecipe(name, title, needs, words = (folder) => [...needs, folder]) {
  const root = await buildRoot();
  const script = recipe(`${name}.sh`);
  const inputs = {
    toolchain: packageVersions(root, TOOLCHAIN),
    needs: needs.map((path) => relative(cacheDir, path)),
    words: words('').filter((word) => !needs.includes(word)),
    script: readFileSync(script, 'utf8'),
  };
  return cached(name, title, inputs, async (folder, note, log) => {
    // The sandbox's /tmp is memory; these builds are too large for it.
    const scratch = `${folder}.scratch`;
    rmSync(scratch, { recursive: true, force: true });
    mkdirSync(scratch, { recursive: true });
    const command = sandboxed(root, [script, ...words(folder)], {
      writable: [folder, scratch],
      readable: [dirname(script), ...needs],
      // Who made a tarball has no account here.
      env: { TMPDIR: scratch, TAR_OPTIONS: '--no-same-owner' },
      network: name === 'fetch-sources',
    });
    await runLogged(command, { log, note });
    rmSync(scratch, { recursive: true, force: true });
  });
}
