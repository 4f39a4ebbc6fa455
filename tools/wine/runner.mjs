// Runs a Windows program under Wine, in a sandbox with its own display, sound server and prefix.

import { closeSync, existsSync, openSync, readSync } from 'node:fs';
import { basename, dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import { buildRoot } from '../workshop/build-root.mjs';
import { started } from '../workshop/children.mjs';
import { ffmpegLibraries } from '../workshop/ffmpeg.mjs';
import { WorkshopError } from '../workshop/report.mjs';
import { sandboxed } from '../workshop/sandbox.mjs';
import { removeScratch, scratchFolder } from '../workshop/scratch.mjs';
import { buildDir, isInTree, treeDir } from '../workshop/tree.mjs';
import { DEFAULT_NODE, windowsNode } from '../workshop/windows-node.mjs';
import { winePrefix } from '../workshop/wine-prefix.mjs';

const session = fileURLToPath(new URL('session.sh', import.meta.url));
const TIMED_OUT = 124;

// A disk that fills up soon, for programs that ask what happens then.
const SMALL_DISK = '/small-disk';
const SMALL_DISK_BYTES = 256 * 1024;

// What the clock of Wine's processes shows: seconds before or after the machine's clock, or a moment at which it stands.
const CLOCK = '/tmp/clock';

// A folder into which nobody can write, not even root: the build root's own are mounted so.
const READ_ONLY_DIR = '/usr';

/** A path of this machine as Windows programs see it. */
export const windowsPath = (path) => `Z:${path}`.replaceAll('/', '\\');

/** The path of this machine for one that windowsPath gave. */
export const hostPath = (path) => path.replace(/^Z:/, '').replaceAll('\\', '/');

/**
 * Runs a Windows program to its end, its output passed through as it comes.
 *
 * @param {string} program path of an executable, or `node` for Node.js for Windows
 * @param {string[]} words its arguments
 * @param {object} options
 * @param {number} [options.timeout] seconds after which the program and all it started are ended
 * @param {boolean} [options.standins] puts the stand-ins for what Wine lacks in place
 * @param {boolean} [options.clock] gives Wine's processes a clock that can be set; the others keep that of the machine
 * @param {string} [options.screen] size of the screen, or `none` for a session without a display
 * @param {number} [options.scale] display scaling in per cent, as the system's settings have it
 * @param {number} [options.smallDisk] bytes of the disk that BRISOLTE_SMALL_DISK names; it is gone with the session
 * @param {string[]} [options.writable] folders beside the tree that the program may write, under their own names
 * @param {string[]} [options.readable] folders beside the tree that the program may read, under their own names
 * @param {boolean} [options.outputOnly] leaves out what goes to standard error, where FFmpeg's libraries tell of each file
 * @param {{write(chunk: Buffer): void}} [options.stdout] where its output goes, unless to this process's own
 * @param {{write(chunk: Buffer): void}} [options.stderr]
 * @param {Record<string, string>} [options.env] the program's environment beside Wine's own
 * @returns {Promise<number>} the exit code, 124 after a time-out
 */
export async function runUnderWine(program, words, options = {}) {
  const { timeout = 300, standins = false, clock = false, screen = '1280x720' } = options;
  const { scale = 100, smallDisk = SMALL_DISK_BYTES } = options;
  const { writable = [], readable = [], env = {} } = options;
  const { outputOnly = false, stdout = process.stdout, stderr = process.stderr } = options;
  const executable = program === 'node' ? await windowsNode(options.node ?? DEFAULT_NODE) : resolve(program);
  if (!existsSync(executable)) {
    throw new WorkshopError(`${executable} does not exist; build it first: node tools/build.mjs windows`);
  }
  const [root, template, ffmpeg] = [await buildRoot(), await winePrefix(), await ffmpegLibraries()];
  const output = scratchFolder('wine');
  const host = '/prefix/drive_c/host';
  const standinsDir = join(buildDir('windows'), 'standins');
  const command = sandboxed(root, [session, `C:\\host\\${basename(executable)}`, ...words], {
    cwd: isInTree(process.cwd()) ? process.cwd() : treeDir,
    readable: [dirname(session), ffmpeg, ...readable],
    writable: [treeDir, ...writable],
    mounts: [
      ...['--tmpfs', '/prefix', '--ro-bind', template, '/template', '--bind', output, '/output'],
      ...['--ro-bind', `${template}/drive_c/windows`, '/prefix/drive_c/windows'],
      ...['--tmpfs', '/prefix/drive_c/windows/temp', '--ro-bind', executable, `${host}/${basename(executable)}`],
      ...(standins
        ? [
            ...['--ro-bind', standinsDir, '/prefix/drive_c/standins'],
            // In place of Wine's, where the module finds it as it finds the system's; ours loads Wine's from beside.
            ...['--ro-bind', `${standinsDir}/d3d11.dll`, '/prefix/drive_c/windows/system32/d3d11.dll'],
            ...['--ro-bind', `${template}/drive_c/windows/system32/d3d11.dll`, '/prefix/drive_c/wine/wine-d3d11.dll'],
            ...['mf.dll', 'mfreadwrite.dll'].flatMap((name) => bindOver(standinsDir, name)),
            ...bindOver(standinsDir, 'GraphicsCapture.dll', 'graphicscapture.dll'),
          ]
        : []),
      ...['--dir', SMALL_DISK, '--size', String(smallDisk), '--tmpfs', SMALL_DISK],
    ],
    env: {
      WINEDEBUG: '-all',
      // Wine takes these folders into PATH: the tests' programs find FFmpeg's libraries here.
      WINEPATH: windowsPath(`${ffmpeg}/bin`),
      BRISOLTE_SMALL_DISK: windowsPath(SMALL_DISK),
      BRISOLTE_READ_ONLY_DIR: windowsPath(READ_ONLY_DIR),
      BRISOLTE_SCREEN: screen,
      BRISOLTE_DPI: String(dotsPerInch(scale)),
      BRISOLTE_STANDINS: standins ? '1' : '',
      ...(clock ? { BRISOLTE_CLOCK: windowsPath(CLOCK) } : {}),
      ...env,
    },
  });
  const streams = [
    new FollowedFile(join(output, 'stdout'), stdout),
    ...(outputOnly ? [] : [new FollowedFile(join(output, 'stderr'), stderr)]),
  ];
  const follow = setInterval(() => streams.forEach((stream) => stream.pass()), 100);
  try {
    return await exitCode(started(command, { stdio: ['ignore', 'inherit', 'inherit'] }), timeout);
  } finally {
    clearInterval(follow);
    streams.forEach((stream) => stream.close());
    removeScratch(output);
  }
}

const bindOver = (folder, name, systemName = name) => [
  '--ro-bind',
  `${folder}/${name}`,
  `/prefix/drive_c/windows/system32/${systemName}`,
];

/** The number of dots in an inch that the system's settings have for a scaling in per cent. */
function dotsPerInch(scale) {
  const dots = (scale * 96) / 100;
  if (!Number.isInteger(dots) || dots < 96 || dots > 480) {
    throw new WorkshopError(`a scale of ${scale} per cent is none that the system offers`);
  }
  return dots;
}

function exitCode(child, timeout) {
  return new Promise((resolve, reject) => {
    const limit = setTimeout(() => {
      console.error(`ended after its time limit of ${timeout} s`);
      child.kill('SIGKILL');
      resolve(TIMED_OUT);
    }, timeout * 1000);
    child.on('error', reject);
    child.on('close', (code) => {
      clearTimeout(limit);
      resolve(code ?? 1);
    });
  });
}

/** Passes on what another process appends to a file. */
class FollowedFile {
  #path;
  #stream;
  #file;
  #buffer = Buffer.alloc(1 << 16);

  constructor(path, stream) {
    this.#path = path;
    this.#stream = stream;
  }

  pass() {
    if (this.#file === undefined) {
      if (!existsSync(this.#path)) {
        return;
      }
      this.#file = openSync(this.#path, 'r');
    }
    for (let count; (count = readSync(this.#file, this.#buffer)) > 0; ) {
      this.#stream.write(Buffer.from(this.#buffer.subarray(0, count)));
    }
  }

  close() {
    this.pass();
    if (this.#file !== undefined) {
      closeSync(this.#file);
    }
  }
}
