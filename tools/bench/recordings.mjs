// Whole recordings in Node.js for Windows under Wine.

import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { runUnderWine, windowsPath } from '../wine/runner.mjs';
import { WorkshopError } from '../workshop/report.mjs';
import { buildDir, treeDir } from '../workshop/tree.mjs';

const SECONDS = 10;

export async function recordings(dir, note) {
  const rows = [];
  for (const fps of [15, 30, 60]) {
    note(`${fps} frames a second`);
    rows.push(row(fps, await record(dir, fps)));
  }
  return rows;
}

async function record(dir, fps) {
  const outputDir = join(dir, 'out');
  mkdirSync(outputDir, { recursive: true });
  const files = { request: join(dir, 'request.json'), result: join(dir, 'result.json') };
  const request = {
    fps,
    seconds: SECONDS,
    packageDir: windowsPath(treeDir),
    pattern: windowsPath(join(buildDir('windows'), 'pattern', 'pattern.exe')),
    ready: windowsPath(join(dir, `ready-${fps}.json`)),
    progress: windowsPath(join(dir, `progress-${fps}`)),
    outputDir: windowsPath(outputDir),
    log: windowsPath(join(dir, 'log')),
    result: windowsPath(files.result),
  };
  writeFileSync(files.request, JSON.stringify(request));
  const words = [windowsPath(join(treeDir, 'tools/bench/recorder.cjs')), windowsPath(files.request)];
  const code = await runUnderWine('node', words, { standins: true, timeout: SECONDS + 60, writable: [dir] });
  if (code !== 0) {
    throw new WorkshopError(`The recording ended with exit code ${code}.`);
  }
  return JSON.parse(readFileSync(files.result, 'utf8'));
}

function row(fps, found) {
  const due = fps * SECONDS;
  return {
    fps,
    'frames due': due,
    'painted by the source': found.painted,
    'delivered by the stand-in': found.delivered,
    recorded: found.recorded,
    'recorded / due': (found.recorded / due).toFixed(2),
    'CPU, s': found.cpuSeconds.toFixed(2),
    'startRecord, ms': found.startMs.toFixed(0),
    'D3D11CreateDevice alone, ms': found.deviceMs.toFixed(0),
    'stopRecord, ms': found.stopMs.toFixed(0),
    'longest pause of the JavaScript thread meanwhile, ms': found.longestPauseMs.toFixed(0),
  };
}
