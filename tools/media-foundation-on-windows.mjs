// The first run of `mf_h264` and `mf_hevc` on a real Windows machine: node tools/media-foundation-on-windows.mjs [STEP ...]
//
// Ten steps, each a recording in a process of its own. Each prints what it expects and what it saw; the recordings stay in
// the folder that is named at the end, to be looked at and listened to. BRISOLTE_PACKAGE names the package's folder, which is
// this tree's otherwise.

import { spawn } from 'node:child_process';
import { closeSync, existsSync, mkdirSync, mkdtempSync, openSync, readFileSync, statSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { performance } from 'node:perf_hooks';
import { setTimeout as delay } from 'node:timers/promises';
import { fileURLToPath } from 'node:url';

const packageDir = process.env.BRISOLTE_PACKAGE ?? fileURLToPath(new URL('..', import.meta.url));
const LONGEST_STOP_MS = 6000;

const STEPS = [
  { name: 'speaker', does: 'records the speaker alone; play something', settings: { mode: -1, speaker: true }, file: /\.m4a$/ },
  { name: 'screen', does: 'records the screen; move something', settings: {}, file: /\.mp4$/ },
  { name: 'hevc', does: 'the same as HEVC, which not every Windows has', settings: { encoder: 'mf_hevc' }, file: /\.mp4$/ },
  { name: 'both', does: 'two sounds beside the screen: two AAC streams', settings: { microphone: true, speaker: true } },
  { name: 'still', does: 'a still screen with sound; touch nothing', settings: { speaker: true }, seconds: 20 },
  { name: 'silent', does: 'a moving screen while nothing plays', settings: { speaker: true }, seconds: 20 },
  { name: 'unplug', does: 'unplug or disable the microphone while it records', settings: { microphone: true }, seconds: 20, warning: /device is gone/ },
  { name: 'bitrate', does: 'a bit rate that AAC does not come with', settings: { speaker: true, audioBitrate: 320000 }, line: /AAC does not come with/ },
  { name: 'long', does: 'a path of more than 259 characters', settings: { folder: ['x'.repeat(120), 'y'.repeat(120)] } },
  { name: 'twice', does: 'two recordings one after the other in one process', settings: { times: 2 } },
];

function apply(recorder, settings, outputDir) {
  recorder.setEncoder(settings.encoder ?? 'mf_h264');
  recorder.setOutputDir(outputDir);
  if (settings.mode !== undefined) {
    recorder.setMode(settings.mode);
  }
  const chosen = (devices) => (devices.find((device) => device.isDefault) ?? devices[0])?.id ?? '';
  recorder.setMicrophoneDevice(settings.microphone ? chosen(recorder.getMicrophones()) : '');
  recorder.setSpeakerDevice(settings.speaker ? chosen(recorder.getSpeakers()) : '');
  if (settings.audioBitrate) {
    recorder.setAudioBitrate(settings.audioBitrate);
  }
}

/** In the child: makes the recordings, and says what came of each as a line of JSON on standard error. */
async function recordStep({ settings, seconds = 8 }, dir) {
  const { Brisolte } = createRequire(import.meta.url)(packageDir);
  const outputDir = join(dir, ...(settings.folder ?? []));
  mkdirSync(outputDir, { recursive: true });
  const recorder = new Brisolte();
  apply(recorder, settings, outputDir);
  for (let i = 0; i < (settings.times ?? 1); i += 1) {
    const started = recorder.startRecord();
    await delay(started ? 1000 * seconds : 0);
    const before = performance.now();
    const stopped = recorder.stopRecord();
    const stopMs = Math.round(performance.now() - before);
    console.error(JSON.stringify({ started, stopped, stopMs, file: recorder.getSaveFilePath() }));
  }
}

/** Runs a step in a process of its own: { log, results, code }. */
async function runStep(index, dir) {
  const files = ['log', 'results'].map((name) => join(dir, `${STEPS[index].name}.${name}`));
  const [log, results] = files.map((file) => openSync(file, 'w'));
  const words = [fileURLToPath(import.meta.url), '--child', String(index), dir];
  const child = spawn(process.execPath, words, { stdio: ['ignore', log, results] });
  const code = await new Promise((resolve) => child.on('exit', resolve));
  [log, results].forEach(closeSync);
  const [text, lines] = files.map((file) => readFileSync(file, 'utf8'));
  return { code, log: text, results: lines.split(/\r?\n/).filter((line) => line.startsWith('{')).map((line) => JSON.parse(line)) };
}

/** What of a step was not as expected, in words. */
function differences({ settings, file, line, warning }, { code, log, results }) {
  const errors = log.split(/\r?\n/).filter((text) => text.includes('[ERROR] '));
  const sizes = results.map(({ file: path }) => (existsSync(path) ? statSync(path).size : 0));
  return [
    code !== 0 && `the process ended with ${code}`,
    results.length !== (settings.times ?? 1) && `${results.length} recordings came to an end`,
    results.some(({ started, stopped }) => !started || !stopped) && 'startRecord or stopRecord gave false',
    results.some(({ stopMs }) => stopMs > LONGEST_STOP_MS) && `stopRecord took ${results.map(({ stopMs }) => stopMs)} ms`,
    sizes.some((size) => size < 10_000) && `the files have ${sizes} bytes`,
    file && results.some(({ file: path }) => !file.test(path)) && `the files are called ${results.map(({ file: path }) => path)}`,
    line && !line.test(log) && `no line of the log has ${line}`,
    warning && !warning.test(log) && `no line of the log has ${warning}`,
    errors.length > 0 && `ERROR lines:\n      ${errors.join('\n      ')}`,
  ].filter(Boolean);
}

async function main() {
  const wanted = process.argv.slice(2);
  const dir = mkdtempSync(join(tmpdir(), 'brisolte-mf-'));
  let failed = 0;
  for (const [index, step] of STEPS.entries()) {
    if (wanted.length > 0 && !wanted.includes(step.name)) {
      continue;
    }
    console.log(`${index + 1} ${step.name}: ${step.does}`);
    console.log('    expected: true from start and stop, a file that plays to its end, no ERROR line');
    const outcome = await runStep(index, dir);
    const found = differences(step, outcome);
    failed += found.length > 0 ? 1 : 0;
    console.log(`    seen: ${found.length > 0 ? found.join('\n    and: ') : 'the same'}`);
    outcome.results.forEach((result) => console.log(`    ${result.file}, stopped in ${result.stopMs} ms`));
  }
  console.log(`\nRecordings and logs: ${dir}. Play each file to its end: picture, sound, and both at the same time.`);
  process.exitCode = failed > 0 ? 1 : 0;
}

if (process.argv[2] === '--child') {
  await recordStep(STEPS[Number(process.argv[3])], process.argv[4]);
} else {
  await main();
}
