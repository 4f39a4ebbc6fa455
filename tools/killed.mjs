// Kills the process in the middle of a recording, for each container, and tells what remains to be played.
// npm run killed [-- --seconds N --encoder NAME]: how long each recording has gone on by then, 30 s unless said otherwise,
// and the only encoder of those below.

import { existsSync, mkdirSync, mkdtempSync, readdirSync, readFileSync, rmSync, statSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { parseArgs } from 'node:util';
import { decode } from './soak/decode.mjs';
import { runUnderWine, windowsPath } from './wine/runner.mjs';
import { buildRoot } from './workshop/build-root.mjs';
import { main, step, WorkshopError } from './workshop/report.mjs';
import { sandboxed } from './workshop/sandbox.mjs';
import { buildDir, buildTree, treeDir } from './workshop/tree.mjs';

const RECORDINGS = [
  { encoder: 'libx264', sound: true },
  { encoder: 'libvpx', sound: false },
  { encoder: 'prores_ks', sound: true },
  { encoder: 'mjpeg', sound: true },
  { encoder: 'none', sound: true, picture: false },
];

await main(async () => {
  const { values } = parseArgs({ options: { seconds: { type: 'string', default: '30' }, encoder: { type: 'string' } } });
  const seconds = Number(values.seconds);
  const chosen = RECORDINGS.filter(({ encoder }) => !values.encoder || encoder === values.encoder);
  if (!(seconds >= 1 && seconds <= 600) || chosen.length === 0) {
    const encoders = RECORDINGS.map(({ encoder }) => `"${encoder}"`).join(', ');
    throw new WorkshopError(`usage: npm run killed -- [--seconds N] [--encoder NAME], from 1 to 600, one of ${encoders}`);
  }
  await step('Build: the module', () => buildTree('windows', ['brisolte', 'pattern', 'standins']));
  const rows = [];
  for (const recording of chosen) {
    rows.push(await step(`Recording until killed: ${recording.encoder}`, () => recordAndKill(recording, seconds)));
  }
  console.log(`\nKilled after ${seconds} s of recording; what FFmpeg plays of the file:\n`);
  console.table(rows);
  return 0;
});

async function recordAndKill({ encoder, sound, picture = true }, seconds) {
  const scratchDir = mkdtempSync(join(tmpdir(), 'brisolte-killed-'));
  try {
    const outputDir = join(scratchDir, 'out');
    mkdirSync(outputDir);
    const [requestFile, resultFile] = ['request.json', 'result.json'].map((name) => join(scratchDir, name));
    const request = {
      ...{ encoder, sound, picture, seconds },
      packageDir: windowsPath(treeDir),
      contentProgram: windowsPath(join(buildDir('windows'), 'pattern', 'pattern.exe')),
      scratchDir: windowsPath(scratchDir),
      outputDir: windowsPath(outputDir),
      resultFile: windowsPath(resultFile),
    };
    writeFileSync(requestFile, JSON.stringify(request));
    const words = [windowsPath(join(treeDir, 'tools/killed/watcher.cjs')), windowsPath(requestFile)];
    const code = await runUnderWine('node', words, { standins: true, timeout: seconds + 120, writable: [scratchDir] });
    if (code !== 0 || !existsSync(resultFile)) {
      throw new WorkshopError(`The recording ended with exit code ${code}; the lines above say why.`);
    }
    const [name] = readdirSync(outputDir);
    const file = join(outputDir, name);
    const root = await buildRoot();
    const found = decode(file, (each) => sandboxed(root, each, { writable: [scratchDir] }));
    return {
      container: name.split('.').at(-1),
      encoder,
      recorded: JSON.parse(readFileSync(resultFile, 'utf8')).seconds.toFixed(1),
      kilobytes: Math.round(statSync(file).size / 1024),
      opens: found.opens,
      played: found.seconds.toFixed(1),
      frames: found.frames,
      sounds: found.sounds,
      complaint: found.errors.split('\n')[0].replaceAll(file, 'the file').slice(0, 60),
    };
  } finally {
    rmSync(scratchDir, { recursive: true, force: true });
  }
}
