// The test layers: which programs or files each has, how one of them is run, and how its results are counted.

import { readdirSync, readFileSync } from 'node:fs';
import { cpus } from 'node:os';
import { basename, delimiter, dirname, join, relative } from 'node:path';
import { runUnderWine, windowsPath } from '../wine/runner.mjs';
import { ffmpegOfTests } from '../workshop/ffmpeg.mjs';
import { runThrough } from '../workshop/processes.mjs';
import { WorkshopError } from '../workshop/report.mjs';
import { scratchFolder } from '../workshop/scratch.mjs';
import { buildDir, runInRoot, treeDir } from '../workshop/tree.mjs';
import { packageHosts } from '../workshop/windows-node.mjs';
import { unlessDisplayFails } from './display-failures.mjs';
import { HeldOutput, inLanes } from './lanes.mjs';
import { installedPackage } from './installed-package.mjs';

// Far above what the slowest test program takes.
const PROGRAM_LIMIT_S = 1200;
const resultsDir = scratchFolder('test');

// Tests that set the clock of their session.
const CLOCK_TESTS = ['clock.test.js'];

// Tests that run once at each of these scales of the display.
const SCALED_TESTS = ['scaling.test.js'];
const SCALES = [100, 125, 150, 200];

// Of the files of a layer those that take longest, which begin first, so that none is left over at the end while only one
// lane runs; and those that compare times, which run by themselves.
const LONG = {
  javascript: [
    ...['hostile.test.js', 'faults/inventory.test.js', 'js/recorder.test.js', 'faults/hanging.test.js', 'formats.test.js'],
    ...['scaling.test.js', 'faults/recorder-hangs.test.js', 'recorder-host.test.js', 'faults/sound.test.js', 'js/window.test.js', 'lifecycle.test.js'],
  ],
  package: ['hosts.test.js', 'examples-in-hosts.test.js', 'examples.test.js'],
  recorder: ['host.test.js', 'recording.test.js', 'failures.test.js'],
  windows: ['capture_tests.exe', 'video_tests.exe', 'encoder_tests.exe'],
};
const TIMED = [
  ...['js/timing.test.js', 'js/sound.test.js', 'js/recorder-sound.test.js', 'js/mediafoundation.test.js', 'faults/mediafoundation.test.js'],
  ...['faults/clock.test.js', 'js/recorder-kills.test.js', 'js/recorder-pause.test.js', 'js/recorder-volumes.test.js'],
];
// Every file has a sandbox, a display, a sound server and a prefix of its own. More than two would wait for each other's frames.
const LANES = Math.min(2, cpus().length);

/**
 * Each layer with the words for its results, the preset it needs built, if any, its files, how one of them runs, and in
 * what order they run side by side, if they do.
 */
export const layers = {
  workshop: { title: 'the workshop itself', files: () => javascriptTests('workshop'), run: runOnThisMachine },
  linux: { title: 'portable code on Linux', preset: 'linux', files: testPrograms, run: runLinuxProgram },
  'linux-asan': {
    title: 'portable code under AddressSanitizer and UndefinedBehaviorSanitizer',
    preset: 'linux-asan',
    files: testPrograms,
    run: runLinuxProgram,
  },
  'linux-tsan': {
    title: 'portable code under ThreadSanitizer',
    preset: 'linux-tsan',
    files: testPrograms,
    run: runLinuxProgram,
  },
  fuzz: { title: 'portable code fed by libFuzzer', preset: 'fuzz', files: () => fuzzers(), run: runFuzzer },
  windows: {
    title: 'Windows programs under Wine',
    preset: 'windows',
    files: testPrograms,
    run: runWindowsProgram,
    sideBySide: { first: LONG.windows },
  },
  recorder: {
    title: 'Recorder and the command line on this machine',
    files: () => javascriptTests('recorder'),
    run: runOnThisMachine,
    sideBySide: { first: LONG.recorder },
  },
  javascript: {
    title: 'JavaScript in Node.js for Windows under Wine',
    preset: 'windows',
    files: javascriptLayerTests,
    run: runJavascript,
    sideBySide: { first: LONG.javascript, alone: TIMED },
  },
  package: {
    title: 'the packed package, installed outside the tree',
    preset: 'windows',
    files: () => javascriptTests('package'),
    run: runWithPackage,
    sideBySide: { first: LONG.package },
  },
};

const scalesOf = (file) => (SCALED_TESTS.includes(basename(file)) ? SCALES : [100]);

/**
 * Runs the programs or files of a layer that `wanted` lets through, on displays of these scales in per cent: 100 unless said
 * otherwise or the file has its own.
 * @returns {Promise<{files: number, passed: number, failed: number, broken: string[]}>} `files` is how many those were,
 *   `broken` names the ones that failed
 */
export async function runLayer(name, wanted, note, scales) {
  const { preset, files, run, sideBySide } = layers[name];
  const all = files(preset);
  if (all.length === 0) {
    throw new WorkshopError(`there is nothing to run: ${name}`);
  }
  const chosen = all.filter(wanted);
  const total = { files: chosen.length, passed: 0, failed: 0, broken: [] };
  const count = async (file, output) => {
    for (const scale of scales ?? scalesOf(file)) {
      const runOnce = (given) => run(file, name, { ...given, scale });
      const { passed, failed, code } = await (preset === 'windows' ? unlessDisplayFails(output, runOnce) : runOnce(output));
      total.passed += passed;
      total.failed += failed;
      // A program that dies in the middle has no failed test to show for it.
      if (failed > 0 || code !== 0 || passed === 0) {
        const where = scale === 100 ? '' : ` at ${scale} %`;
        total.broken.push(`${relative(treeDir, file)}${where} (exit code ${code})`);
      }
    }
  };
  await inLanes(chosen, { lanes: sideBySide ? LANES : 1, ...sideBySide }, note, count);
  return total;
}

/** The test programs that a preset has built. */
export function testPrograms(preset) {
  const folder = join(buildDir(preset), 'tests');
  return filesIn(folder).filter((file) => /_tests(\.exe)?$/.test(file));
}

const javascriptTests = (folder) => filesIn(join(treeDir, 'tests', folder)).filter((file) => /\.test\.m?js$/.test(file));

/** The JavaScript tests of the module in the tree. */
export function javascriptLayerTests() {
  return [...javascriptTests('js'), ...javascriptTests('js/faults')];
}

/** The programs that libFuzzer drives. */
export const fuzzers = () => filesIn(join(buildDir('fuzz'), 'fuzz')).filter((file) => basename(file).startsWith('fuzz_'));

const filesIn = (folder) => readdirSync(folder).map((name) => join(folder, name));

/** The file for a program's machine-readable results. */
const resultFile = (layer, program, extension) =>
  join(resultsDir, `${layer}-${relative(treeDir, program).replaceAll('/', '-')}.${extension}`);

/**
 * Each of these runs one program or file and gives { passed, failed, code }; `layer` names its results, and `stdout` and
 * `stderr` say where its output goes, if not to this terminal.
 */
export async function runLinuxProgram(program, layer) {
  // A program's tests run one after the other: its shards use the machine's other cores.
  const shards = await Promise.all(Array.from({ length: LANES }, (_, shard) => runShard(program, layer, shard)));
  const sum = (field) => shards.reduce((total, shard) => total + shard[field], 0);
  return { passed: sum('passed'), failed: sum('failed'), code: shards.find(({ code }) => code !== 0)?.code ?? 0 };
}

async function runShard(program, layer, shard) {
  const results = resultFile(`${layer}-${shard}`, program, 'json');
  const env = {
    TSAN_OPTIONS: 'halt_on_error=1:second_deadlock_stack=1',
    ASAN_OPTIONS: 'detect_stack_use_after_return=1:strict_string_checks=1',
    UBSAN_OPTIONS: 'print_stacktrace=1',
    GTEST_TOTAL_SHARDS: String(LANES),
    GTEST_SHARD_INDEX: String(shard),
  };
  const words = [program, '--gtest_brief=1', `--gtest_output=json:${results}`];
  const limited = ['timeout', '--signal=KILL', String(PROGRAM_LIMIT_S), ...words];
  const output = new HeldOutput();
  const code = await runInRoot(limited, { env, writable: [resultsDir], stdout: output, stderr: output });
  output.release();
  return { ...googleTestCounts(results), code };
}

// The same inputs at every run, for a few seconds; `npm run fuzz` looks for new ones.
const FUZZ_RUNS = { fuzz_frames: 3000, fuzz_sounds: 3000, fuzz_wave_formats: 300_000 };

async function runFuzzer(program) {
  const name = basename(program);
  if (!FUZZ_RUNS[name]) {
    throw new Error(`how often ${name} runs is not said`);
  }
  const code = await fuzz(program, ['-seed=1', `-runs=${FUZZ_RUNS[name]}`]);
  return { passed: code === 0 ? 1 : 0, failed: code === 0 ? 0 : 1, code };
}

/** Lets libFuzzer drive a program; an input that breaks it is kept in build/fuzz. Gives the exit code. */
export function fuzz(program, options) {
  const words = ['-max_len=4096', '-timeout=20', '-verbosity=0', `-artifact_prefix=${buildDir('fuzz')}/`, ...options];
  return runInRoot([program, ...words]);
}

export async function runWindowsProgram(program, layer, { scale, ...output } = {}) {
  const results = resultFile(layer, program, 'json');
  const words = ['--gtest_brief=1', `--gtest_output=json:${windowsPath(results)}`];
  const options = { standins: true, scale, timeout: PROGRAM_LIMIT_S, writable: [resultsDir], ...output };
  const code = await runUnderWine(program, words, options);
  return { ...googleTestCounts(results), code };
}

/**
 * Runs one test file in Node.js for Windows.
 * @param {string} file
 * @param {string} layer
 * @param {object} options folders that the tests read and write, more of the environment, the display's scale, seconds until
 *   they are ended, where their output goes
 * @returns {Promise<{passed: number, failed: number, code: number}>}
 */
export async function runJavascript(file, layer, options = {}) {
  const { readable = [], writable = [], env = {}, scale, timeout = PROGRAM_LIMIT_S, stdout, stderr } = options;
  const tools = `${await ffmpegOfTests()}/bin`;
  const results = resultFile(layer, file, 'xml');
  const words = [
    ...['--test', '--experimental-test-isolation=none', '--expose-gc'],
    // A child that a failing test left behind must not keep the whole run waiting.
    '--test-force-exit',
    ...['--test-reporter=spec', '--test-reporter-destination=stdout', '--test-reporter=junit'],
    ...[`--test-reporter-destination=${windowsPath(results)}`, windowsPath(file)],
  ];
  const code = await runUnderWine('node', words, {
    standins: true,
    clock: CLOCK_TESTS.includes(basename(file)),
    ...{ scale, timeout, stdout, stderr },
    readable: [tools, ...readable],
    writable: [resultsDir, ...writable],
    env: { BRISOLTE_FFMPEG_TOOLS: windowsPath(tools), ...env },
  });
  return { ...junitCounts(results), code };
}

/** Tests of the package itself: as ES modules those that run here, as CommonJS those of its life on Windows. */
async function runWithPackage(file, layer, { stdout, stderr } = {}) {
  const { tarball, symbols, project, folder } = await installedPackage(resultsDir);
  if (file.endsWith('.mjs')) {
    const env = { BRISOLTE_TARBALL: tarball, BRISOLTE_SYMBOLS: symbols.join(delimiter), BRISOLTE_PACKAGE: folder };
    return runOnThisMachine(file, layer, { env, stdout, stderr });
  }
  const hosts = await packageHosts();
  return runJavascript(file, layer, {
    ...{ stdout, stderr },
    readable: hosts.map(({ program }) => dirname(program)),
    writable: [project],
    env: {
      BRISOLTE_PACKAGE: windowsPath(folder),
      BRISOLTE_HOSTS: JSON.stringify(hosts.map((host) => ({ ...host, program: windowsPath(host.program) }))),
    },
  });
}

async function runOnThisMachine(file, layer, { env = {}, stdout, stderr } = {}) {
  const results = resultFile(layer, file, 'tap');
  const reporters = ['spec', 'stdout', 'tap', results];
  const flags = reporters.map((value, i) => `--test-reporter${i % 2 === 0 ? '' : '-destination'}=${value}`);
  const code = await runThrough([process.execPath, ...flags, file], {
    cwd: treeDir,
    env: { ...process.env, TMPDIR: resultsDir, ...env },
    ...{ stdout, stderr },
  });
  return { ...tapCounts(results), code };
}

function googleTestCounts(file) {
  const { tests, failures, errors } = JSON.parse(textOf(file) ?? '{"tests":0,"failures":1,"errors":0}');
  return { passed: Math.max(tests - failures - errors, 0), failed: failures + errors };
}

function junitCounts(file) {
  const text = textOf(file) ?? '';
  const count = (name) => Number(text.match(new RegExp(`<!-- ${name} (\\d+) -->`))?.[1] ?? 0);
  return { passed: count('pass'), failed: count('fail') + count('cancelled') + (text ? 0 : 1) };
}

function tapCounts(file) {
  const text = textOf(file) ?? '';
  const count = (name) => Number(text.match(new RegExp(`^# ${name} (\\d+)$`, 'm'))?.[1] ?? 0);
  return { passed: count('pass'), failed: count('fail') + count('cancelled') + (text ? 0 : 1) };
}

function textOf(file) {
  try {
    return readFileSync(file, 'utf8');
  } catch {
    return undefined;
  }
}
