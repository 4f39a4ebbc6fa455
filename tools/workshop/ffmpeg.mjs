// FFmpeg for Windows, from Debian's sources: the libraries the product ships, and the programs of its tests.

import { createHash } from 'node:crypto';
import { existsSync, mkdirSync, readdirSync, readFileSync, rmSync, statSync } from 'node:fs';
import { join, relative, resolve, sep } from 'node:path';
import { fileURLToPath } from 'node:url';
import { buildRoot, packageVersions } from './build-root.mjs';
import { cached, cacheDir, keyOf } from './cache.mjs';
import { runLogged } from './processes.mjs';
import { WorkshopError } from './report.mjs';
import { sandboxed } from './sandbox.mjs';

const recipesDir = fileURLToPath(new URL('recipes', import.meta.url));

// What of the build root gets into the results; another version of Wine, say, is no reason to build them again.
const TOOLCHAIN = [
  ...['g++-mingw-w64-ucrt64', 'gcc-mingw-w64-ucrt64', 'gcc-mingw-w64-ucrt64-runtime'],
  ...['binutils-mingw-w64-ucrt64', 'mingw-w64-ucrt64-dev', 'nasm', 'libffmpeg-nvenc-dev'],
];

// Nothing of a result tells where or when it was made: a recipe sees what it takes and what it makes under the same names
// everywhere, and all its clocks stand still.
const SETTINGS = { TMPDIR: '/scratch', SOURCE_DATE_EPOCH: '1767225600' };

/** The compiler and what else of the build root gets into what is built there, each as "PACKAGE VERSION". */
export const toolchain = async () => packageVersions(await buildRoot(), TOOLCHAIN);

/** Of each tarball that is built: Debian's package and version, its name and its SHA-256. */
export const sourceList = readFileSync(`${recipesDir}/sources.list`, 'utf8')
  .split('\n')
  .filter((line) => line && !line.startsWith('#'))
  .map((line) => {
    const [name, version, file, sha256] = line.split(' ');
    return { name, version, file, sha256 };
  });

/** The licences under which FFmpeg can be built, each with the codec libraries that are in it then. */
export const codecsUnder = {
  gpl: ['lame', 'libvpx', 'onevpl', 'opus', 'x264', 'x265'],
  lgpl: ['lame', 'libvpx', 'onevpl', 'openh264', 'opus'],
};

/**
 * FFmpeg's shared libraries: `bin` with the DLLs, `lib` and `include`. AMD's encoders need the headers of AMD's Advanced
 * Media Framework, which no registry has: the variable AMF_ROOT names their folder, in which `AMF/core/Version.h` lies.
 * @param {'gpl' | 'lgpl'} [licence]
 */
export async function ffmpegLibraries(licence = 'gpl') {
  const { AMF_ROOT: amf } = process.env;
  if (amf && !existsSync(join(amf, 'AMF', 'core', 'Version.h'))) {
    throw new WorkshopError(`AMF_ROOT is ${amf}, where there is no AMF/core/Version.h`);
  }
  const libraries = await codecLibraries(...codecsUnder[licence]);
  const needs = { sources: await patchedSource('ffmpeg'), ...libraries };
  return byRecipe('ffmpeg', 'FFmpeg libraries for Windows', amf ? { ...needs, 'amf/AMF': resolve(amf, 'AMF') } : needs);
}

/**
 * FFmpeg for the tests, apart from the product's: `bin` with `ffmpeg.exe` and `ffprobe.exe`, which read recordings back,
 * `lib` with static libraries, and `include`.
 */
export async function ffmpegOfTests() {
  const libraries = await codecLibraries('x264', 'x265');
  return byRecipe('ffmpeg-tools', 'FFmpeg for the tests', { sources: await patchedSource('ffmpeg'), ...libraries });
}

/** The folders of these libraries, by their names. */
async function codecLibraries(...names) {
  const libraries = {};
  for (const name of names) {
    libraries[name] = await byRecipe(name, `${name} for Windows`, { sources: await patchedSource(name) });
  }
  return libraries;
}

/** The folder of a Debian package's source, with Debian's patches applied. */
export async function patchedSource(name) {
  const files = sourceList.filter((each) => each.name === name).flatMap(({ file, sha256 }) => [file, sha256]);
  const options = { words: [name, ...files], network: true };
  return join(await byRecipe('fetch-source', `Source of ${name}`, {}, options), 'source');
}

/**
 * The headers of the FFmpeg that a series of Debian has, as `bookworm` or `sid`.
 * @param {string} [until] what the headers are fetched anew for, as today's date
 */
export const ffmpegHeaders = (series, until = '') =>
  byRecipe('ffmpeg-headers', `FFmpeg's headers of Debian ${series}`, {}, { words: [series, until].filter(Boolean), network: true });

/** The entry that the recipe of this name fills: it finds the folders of `needs` at /PLACE and makes what is at /out. */
async function byRecipe(name, title, needs, { words = [], network = false } = {}) {
  const root = await buildRoot();
  const inputs = {
    ...{ SETTINGS, words, toolchain: network ? [] : packageVersions(root, TOOLCHAIN) },
    needs: Object.entries(needs).map(([place, path]) => [place, identityOf(path)]),
    script: readFileSync(`${recipesDir}/${name}.sh`, 'utf8'),
  };
  return cached(name, title, inputs, async (folder, note, log) => {
    // The sandbox's /tmp is memory; these builds are too large for it.
    const scratch = `${folder}.scratch`;
    rmSync(scratch, { recursive: true, force: true });
    mkdirSync(scratch, { recursive: true });
    const mounts = [
      ...Object.entries({ recipes: recipesDir, ...needs }).flatMap(([place, path]) => ['--ro-bind', path, `/${place}`]),
      ...['--bind', scratch, SETTINGS.TMPDIR, '--bind', folder, '/out'],
    ];
    await runLogged(sandboxed(root, [`/recipes/${name}.sh`, ...words], { mounts, network, env: SETTINGS }), { log, note });
    rmSync(scratch, { recursive: true, force: true });
  });
}

/** What a result that is made from a folder depends on: an entry of the cache says it in its name, of another each file counts. */
export function identityOf(folder) {
  if (folder.startsWith(cacheDir + sep)) {
    return relative(cacheDir, folder);
  }
  const names = readdirSync(folder, { recursive: true }).sort();
  const contents = names
    .filter((name) => statSync(join(folder, name)).isFile())
    .map((name) => [name, createHash('sha256').update(readFileSync(join(folder, name))).digest('hex')]);
  return keyOf(contents);
}
