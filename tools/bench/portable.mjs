// The measurements of the portable half, each in a process of its own.

import { rmSync } from 'node:fs';
import { join } from 'node:path';
import { buildRoot } from '../workshop/build-root.mjs';
import { outputOf } from '../workshop/processes.mjs';
import { sandboxed } from '../workshop/sandbox.mjs';
import { buildDir, treeDir } from '../workshop/tree.mjs';

const FRAMES = 600;
const FILM = 60; // pictures in the film that is shown again and again
const SIZE = [1920, 1080];
const ROUNDS = 3;

// What the recorder sets for these encoders, in the words of the ffmpeg program.
const COMMON = ['-g', '30', '-bf', '0', '-refs', '1', '-b:v', '5000000'];
// Told of the pictures that are read: told of the file alone, the program would convert them.
const COLOURS = ['-color_range', 'tv', '-colorspace', 'bt709'];
const PATHS = [
  {
    input: 'nv12',
    encoder: 'libx264',
    extension: 'mp4',
    options: [
      ...[...COMMON, '-profile:v', 'main', '-preset', 'veryfast', '-crf', '24', '-tune', 'zerolatency'],
      ...['-sc_threshold', '0', '-threads', 'auto', '-pix_fmt', 'nv12'],
    ],
  },
  {
    input: 'yuv420p',
    encoder: 'mpeg4',
    extension: 'mp4',
    options: [
      ...[...COMMON, '-threads', '0', '-thread_type', 'slice+frame', '-qmin', '2', '-qmax', '31', '-qdiff', '3'],
      ...['-qblur', '0.5', '-qcomp', '0.6', '-trellis', '0', '-sc_threshold', '0', '-mbd', '0', '-flags', '+qscale'],
      ...['-global_quality', '5', '-strict', 'unofficial', '-pix_fmt', 'yuv420p'],
    ],
  },
  {
    input: 'bgra',
    encoder: 'mjpeg',
    extension: 'avi',
    options: [
      ...['-g', '1', '-b:v', '5000000', '-strict', 'unofficial', '-sws_flags', 'fast_bilinear', '-pix_fmt', 'yuvj420p'],
    ],
  },
];

/** Runs a program of the build root; gives its standard output. */
async function inRoot(words, dir) {
  const root = await buildRoot();
  return outputOf(sandboxed(root, words, { readable: [treeDir], writable: [dir] }));
}

async function measure(dir, ...words) {
  const program = join(buildDir('bench'), 'tests', 'bench', 'bench');
  return JSON.parse(await inRoot([program, ...words.map(String)], dir));
}

/** Ours, a bare loop over FFmpeg's libraries, and the ffmpeg program, in turns; of each the round with the least CPU time. */
export async function encoding(dir, note) {
  const rows = [];
  for (const path of PATHS) {
    const raw = join(dir, 'film.raw');
    await measure(dir, 'pictures', path.input, ...SIZE, raw);
    const best = { ours: undefined, bare: undefined, program: undefined };
    for (let round = 1; round <= ROUNDS; round += 1) {
      note(`${path.input}, round ${round} of ${ROUNDS}`);
      for (const who of Object.keys(best)) {
        const file = join(dir, `${who}.${path.extension}`);
        const found =
          who === 'program'
            ? await ffmpegProgram(dir, path, raw, file)
            : await measure(dir, 'encode', who, path.input, path.encoder, ...SIZE, FRAMES, file);
        best[who] = !best[who] || found.cpuSeconds < best[who].cpuSeconds ? found : best[who];
        rmSync(file);
      }
    }
    rmSync(raw);
    rows.push(encodingRow(path, best));
  }
  return rows;
}

function encodingRow({ input, encoder }, { ours, bare, program }) {
  return {
    input: `${input}, ${encoder}`,
    ours: ours.cpuSeconds.toFixed(2),
    'bare libraries': bare.cpuSeconds.toFixed(2),
    'ffmpeg program': program.cpuSeconds.toFixed(2),
    'ours / bare': (ours.cpuSeconds / bare.cpuSeconds).toFixed(3),
    'ours / program': (ours.cpuSeconds / program.cpuSeconds).toFixed(3),
    'outside the codec, µs a frame': ours.outsideMicroseconds.toFixed(0),
    'our allocations, frames 60 to 599': ours.allocations,
  };
}

async function ffmpegProgram(dir, { input, encoder, options }, raw, file) {
  const layout = input === 'bgra' ? 'bgra' : 'nv12';
  const film = ['-stream_loop', String(FRAMES / FILM - 1), '-f', 'rawvideo', '-pix_fmt', layout, '-s', SIZE.join('x')];
  const colours = layout === 'nv12' ? COLOURS : [];
  const words = [...film, '-r', '30', ...colours, '-i', raw, '-c:v', encoder, ...options, '-movflags', 'faststart', '-y', file];
  const timed = ['bash', '-c', 'TIMEFORMAT="%U %S"; { time "$@" 2>/dev/null; } 2>&1', 'ffmpeg', 'ffmpeg', '-v', 'error'];
  const [user, system] = (await inRoot([...timed, '-nostdin', ...words], dir)).trim().split(' ').map(Number);
  return { cpuSeconds: user + system };
}

export async function copies(dir) {
  const { memcpy, nv12, yuv420p } = await measure(dir, 'copies', ...SIZE);
  return Object.entries({ memcpy, nv12, yuv420p }).map(([what, time]) => ({
    what,
    'µs': time.toFixed(0),
    'against memcpy': (time / memcpy).toFixed(2),
  }));
}

export async function packets(dir) {
  const rows = [];
  for (const producers of [1, 2]) {
    const found = await measure(dir, 'packets', 100_000, producers);
    rows.push({
      producers,
      'µs a packet, for its producer': found.enqueueMicroseconds.toFixed(2),
      'CPU µs a packet, in all': found.cpuMicroseconds.toFixed(2),
      'peak memory, MiB': found.peakMiB.toFixed(1),
      written: found.written,
    });
  }
  return rows;
}

export async function sounds(dir) {
  const found = await measure(dir, 'sounds', 60, join(dir, 'sounds.mp4'));
  return [
    {
      'CPU ms a second of both': found.cpuMilliseconds.toFixed(1),
      'from delivery to packet, µs, mean': found.meanMicroseconds.toFixed(0),
      'most': found.mostMicroseconds.toFixed(0),
    },
  ];
}

export async function sizes(dir, note) {
  const rows = [];
  for (const [width, height] of [[640, 360], [1280, 720], [1920, 1080], [2560, 1440], [3840, 2160]]) {
    note(`${width}x${height}`);
    const frames = 120;
    const found = await measure(dir, 'encode', 'ours', 'nv12', 'libx264', width, height, frames, join(dir, 'size.mp4'));
    const megapixels = (width * height) / 1e6;
    rows.push({
      size: `${width}x${height}`,
      'CPU ms a frame': ((1000 * found.cpuSeconds) / frames).toFixed(1),
      'CPU ms a megapixel': ((1000 * found.cpuSeconds) / frames / megapixels).toFixed(1),
      'outside the codec, µs a frame': found.outsideMicroseconds.toFixed(0),
      'start, ms': (1000 * found.startSeconds).toFixed(1),
      'stop, ms': (1000 * found.stopSeconds).toFixed(1),
    });
  }
  return rows;
}

export async function growth(dir, note) {
  const rows = [];
  for (const minutes of [1, 10, 60]) {
    note(`${minutes} minutes`);
    const found = await measure(dir, 'growth', minutes, join(dir, 'long.mp4'));
    rows.push({
      minutes,
      'memory grown since the first minute, MiB': found.grownMiB.toFixed(1),
      'stop, ms': found.stopMilliseconds.toFixed(1),
      'file, MiB': found.fileMiB.toFixed(1),
    });
  }
  return rows;
}
