// Measures how picture and sound of a recording fit together: a metronome flashes and clicks at the same moments, and
// what a player would see and hear of it is compared.

import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { parseArgs } from 'node:util';
import { beatsOfPicture, beatsOfSound, lengths } from './sync/beats.mjs';
import { hostPath, runUnderWine, windowsPath } from './wine/runner.mjs';
import { buildRoot } from './workshop/build-root.mjs';
import { outputOf } from './workshop/processes.mjs';
import { main, step, WorkshopError } from './workshop/report.mjs';
import { sandboxed } from './workshop/sandbox.mjs';
import { removeScratch, scratchFolder } from './workshop/scratch.mjs';
import { buildDir, buildTree, treeDir } from './workshop/tree.mjs';

const USAGE = 'usage: npm run sync [-- SECONDS] [--encoder NAME] [--pauses N], from 5 to 280 seconds';

const { values, positionals } = parseArgs({
  allowPositionals: true,
  options: { encoder: { type: 'string', default: 'libx264' }, pauses: { type: 'string', default: '0' } },
});
const SECONDS = Number(positionals[0] ?? 30);
const PAUSES = Number(values.pauses);
// Recorded before a pause, whose joint is judged by the beats behind it, and at most how long a pause is.
const LEAST_RECORDED = 3;
const LONGEST_PAUSE = 2;

const SOURCES = [
  { name: 'speaker', microphone: false, plays: 'Speaker', hears: 'Speaker' },
  { name: 'microphone', microphone: true, plays: 'Room', hears: 'Microphone' },
];

await main(async () => {
  if (!(SECONDS >= 5 && SECONDS <= 280 && Number.isInteger(PAUSES) && PAUSES >= 0 && (PAUSES + 1) * LEAST_RECORDED <= SECONDS)) {
    throw new WorkshopError(USAGE);
  }
  await step('Build: the module', () => buildTree('windows', ['brisolte', 'metronome', 'standins']));
  const rows = {};
  for (const source of SOURCES) {
    rows[source.name] = await step(`Recording: the ${source.name}, ${SECONDS} s`, () => measure(source));
  }
  console.log('\nSound after picture, in milliseconds; lengths and gaps in seconds:\n');
  console.table(Object.fromEntries(Object.entries(rows).map(([name, { whole }]) => [name, whole])));
  if (PAUSES > 0) {
    showPauses(rows);
  }
  return 0;
});

function showPauses(rows) {
  console.log('\nSound after picture behind each pause, against the median of all, in milliseconds:\n');
  console.table(Object.fromEntries(Object.entries(rows).map(([name, { joints }]) => [name, joints])));
  console.log('\nProcessor time, in percent of one processor:\n');
  console.table(Object.fromEntries(Object.entries(rows).map(([name, { load }]) => [name, load])));
}

async function measure(source) {
  const dir = scratchFolder('sync');
  try {
    const { file, wallClock, pausedAt, load } = await record(source, dir);
    const root = await buildRoot();
    const read = (words, options) => outputOf(sandboxed(root, words, { writable: [dir] }), options);
    const beats = pairs(beatsOfPicture(file, read), beatsOfSound(file, read));
    const all = summary(beats.map(({ offset }) => offset));
    const whole = { ...all, wallClock: rounded(wallClock), ...lengths(file, read) };
    return { whole, joints: behindPauses(beats, pausedAt, all.median), load };
  } finally {
    removeScratch(dir);
  }
}

async function record({ microphone, plays, hears }, dir) {
  const outputDir = join(dir, 'out');
  mkdirSync(outputDir);
  const result = join(dir, 'result.json');
  const request = {
    ...{ microphone, plays, hears, seconds: SECONDS, encoder: values.encoder, pauses: PAUSES, longestPause: LONGEST_PAUSE },
    packageDir: windowsPath(treeDir),
    metronome: windowsPath(join(buildDir('windows'), 'pattern', 'metronome.exe')),
    ready: windowsPath(join(dir, 'ready')),
    outputDir: windowsPath(outputDir),
    result: windowsPath(result),
  };
  const requestFile = join(dir, 'request.json');
  writeFileSync(requestFile, JSON.stringify(request));
  const words = [windowsPath(join(treeDir, 'tools/sync/recorder.cjs')), windowsPath(requestFile)];
  const code = await runUnderWine('node', words, { standins: true, timeout: SECONDS + PAUSES * LONGEST_PAUSE + 60, writable: [dir] });
  if (code !== 0) {
    throw new WorkshopError(`The recording ended with exit code ${code}; the lines above say why.`);
  }
  const { file, ...measured } = JSON.parse(readFileSync(result, 'utf8'));
  return { file: hostPath(file), ...measured };
}

// Each click with how much later it is than the flash that is nearest to it, in milliseconds.
function pairs(flashes, clicks) {
  return clicks
    .map((click) => ({ click, offset: flashes.map((flash) => 1000 * (click - flash)).sort((a, b) => Math.abs(a) - Math.abs(b))[0] }))
    .filter(({ offset }) => Math.abs(offset) < 500);
}

/** The median of the beats from each pause to the next, against that of all. */
function behindPauses(beats, pausedAt, median) {
  return pausedAt.map((from, i) => {
    const between = beats.filter(({ click }) => click >= from && click < (pausedAt[i + 1] ?? Infinity));
    return between.length > 0 ? summary(between.map(({ offset }) => offset)).median - median : 'no beat';
  });
}

function summary(offsets) {
  const sorted = [...offsets].sort((a, b) => a - b);
  return {
    beats: sorted.length,
    median: Math.round(sorted[Math.floor(sorted.length / 2)]),
    least: Math.round(sorted[0]),
    most: Math.round(sorted.at(-1)),
  };
}

function rounded(number) {
  return Math.round(number * 1000) / 1000;
}
