// Tells what remains to be played of a recording that was not completed, for each container: of a process that was killed,
// and on a disk that filled up.
// npm run remains [-- killed|full-disk --seconds N --encoder NAME]: one of the two only; how long a recording has gone on when it
// is killed, 30 s unless said otherwise; and the only encoder of those below.

import { existsSync, mkdirSync, readdirSync, readFileSync, statSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { parseArgs } from 'node:util';
import { decode } from './soak/decode.mjs';
import { runUnderWine, windowsPath } from './wine/runner.mjs';
import { buildRoot } from './workshop/build-root.mjs';
import { main, step, WorkshopError } from './workshop/report.mjs';
import { sandboxed } from './workshop/sandbox.mjs';
import { removeScratch, scratchFolder } from './workshop/scratch.mjs';
import { buildDir, buildTree, treeDir } from './workshop/tree.mjs';

// `disk` is the size in kB of the disk to fill: what the encoder makes of the content in a quarter of a minute to two, and in
// several minutes for the containers whose index grows with them. Where there is no `end`, it is for either.
const RECORDINGS = [
  { encoder: 'libx264', sound: true, disk: 640 },
  { encoder: 'libx264', sound: true, disk: 4_500, end: 'full-disk' },
  { encoder: 'libvpx', sound: false, disk: 384 },
  { encoder: 'prores_ks', sound: true, disk: 10_000 },
  { encoder: 'prores_ks', sound: true, disk: 100_000, end: 'full-disk' },
  { encoder: 'mjpeg', sound: true, disk: 5_000 },
  { encoder: 'none', sound: true, picture: false, disk: 384 },
];

const TITLES = {
  killed: (seconds) => `Killed after ${seconds} s of recording`,
  'full-disk': () => 'Stopped after the disk had filled up',
};

// Far more than the slowest encoder takes to fill its disk.
const FILLING_LIMIT_S = 900;

await main(async () => {
  const { values, positionals } = parseArgs({
    allowPositionals: true,
    options: { seconds: { type: 'string', default: '30' }, encoder: { type: 'string' } },
  });
  const seconds = Number(values.seconds);
  const recordings = RECORDINGS.filter(({ encoder }) => !values.encoder || encoder === values.encoder);
  const ends = positionals.length > 0 ? positionals : Object.keys(TITLES);
  if (!(seconds >= 1 && seconds <= 600) || recordings.length === 0 || ends.some((end) => !TITLES[end])) {
    const encoders = [...new Set(RECORDINGS.map(({ encoder }) => `"${encoder}"`))].join(', ');
    const usage = `usage: npm run remains -- [${Object.keys(TITLES).join('|')}] [--seconds N] [--encoder NAME]`;
    throw new WorkshopError(`${usage}, from 1 to 600, one of ${encoders}`);
  }
  await step('Build: the module', () => buildTree('windows', ['brisolte', 'pattern', 'standins']));
  for (const end of ends) {
    const rows = [];
    for (const recording of recordings.filter((each) => (each.end ?? end) === end)) {
      rows.push(await step(`Recording, ${end}: ${recording.encoder}`, () => whatRemains(recording, end, seconds)));
    }
    console.log(`\n${TITLES[end](seconds)}; what FFmpeg plays of the file:\n`);
    console.table(rows);
  }
  return 0;
});

async function whatRemains(recording, end, seconds) {
  const scratchDir = scratchFolder('remains');
  try {
    const fileDir = join(scratchDir, 'out');
    mkdirSync(fileDir);
    const told = await record(recording, { end, seconds, scratchDir, fileDir });
    const [name] = readdirSync(fileDir);
    const file = join(fileDir, name);
    const root = await buildRoot();
    const found = decode(file, (each) => sandboxed(root, each, { writable: [scratchDir] }));
    return {
      container: name.split('.').at(-1),
      encoder: recording.encoder,
      ...(end === 'full-disk' ? { disk: recording.disk, stopRecord: told.answer, errors: told.errors.join('; ') } : {}),
      recorded: told.seconds.toFixed(1),
      kilobytes: Math.round(statSync(file).size / 1024),
      opens: found.opens,
      played: found.seconds.toFixed(1),
      frames: found.frames,
      sounds: found.sounds,
      complaint: found.errors.split('\n')[0].replaceAll(file, 'the file').slice(0, 60),
    };
  } finally {
    removeScratch(scratchDir);
  }
}

/** Makes the recording, whose file is in `fileDir` afterwards; gives what the watcher tells of it. */
async function record({ encoder, sound, picture = true, disk }, { end, seconds, scratchDir, fileDir }) {
  const [requestFile, resultFile] = ['request.json', 'result.json'].map((name) => join(scratchDir, name));
  const request = {
    ...{ encoder, sound, picture, end },
    seconds: end === 'killed' ? seconds : FILLING_LIMIT_S,
    packageDir: windowsPath(treeDir),
    contentProgram: windowsPath(join(buildDir('windows'), 'pattern', 'pattern.exe')),
    scratchDir: windowsPath(scratchDir),
    fileDir: windowsPath(fileDir),
    resultFile: windowsPath(resultFile),
  };
  writeFileSync(requestFile, JSON.stringify(request));
  const words = [windowsPath(join(treeDir, 'tools/remains/watcher.cjs')), windowsPath(requestFile)];
  const code = await runUnderWine('node', words, {
    standins: true,
    timeout: request.seconds + 120,
    smallDisk: disk * 1024,
    writable: [scratchDir],
  });
  if (code !== 0 || !existsSync(resultFile)) {
    throw new WorkshopError(`The recording ended with exit code ${code}; the lines above say why.`);
  }
  return JSON.parse(readFileSync(resultFile, 'utf8'));
}
