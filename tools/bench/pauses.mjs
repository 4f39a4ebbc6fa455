// For how long the calls of a Recorder keep the event loop of an application from turning, under Wine.

import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { runUnderWine, windowsPath } from '../wine/runner.mjs';
import { WorkshopError } from '../workshop/report.mjs';
import { treeDir } from '../workshop/tree.mjs';

const ROUNDS = 10;

export async function pauses(dir) {
  const outputDir = join(dir, 'out');
  mkdirSync(outputDir, { recursive: true });
  const files = { request: join(dir, 'request.json'), result: join(dir, 'result.json') };
  const request = { rounds: ROUNDS, packageDir: windowsPath(treeDir), outputDir: windowsPath(outputDir), result: windowsPath(files.result) };
  writeFileSync(files.request, JSON.stringify(request));
  const words = [windowsPath(join(treeDir, 'tools/bench/host.cjs')), windowsPath(files.request)];
  const code = await runUnderWine('node', words, { standins: true, timeout: 300, writable: [dir] });
  if (code !== 0) {
    throw new WorkshopError(`The application ended with exit code ${code}.`);
  }
  return Object.entries(JSON.parse(readFileSync(files.result, 'utf8'))).map(([call, found]) => row(call, found));
}

const median = (numbers) => [...numbers].sort((a, b) => a - b)[Math.floor(numbers.length / 2)];

function row(call, found) {
  const of = (name) => found.map((each) => each[name]);
  return {
    call,
    times: found.length,
    'longest pause, ms': Math.max(...of('pauseMs')).toFixed(1),
    'longest without the waits for a processor, ms': Math.max(...of('ownPauseMs')).toFixed(1),
    'median of the longest pauses, ms': median(of('pauseMs')).toFixed(1),
    'processor time of the application, ms (median)': median(of('usedMs')).toFixed(0),
    'resolves after, ms (median)': median(of('tookMs')).toFixed(0),
  };
}
