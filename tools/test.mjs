// Builds everything and runs every test: node tools/test.mjs [layer ...] [--only TEXT]
//
// Layers: style (formatter, linter), linux, linux-asan, linux-tsan (the portable code, also under sanitizers), windows
// (the same and the Windows code under Wine), javascript (the module that ships, in Node.js for Windows under Wine).
// --only runs the test programs or files whose name contains TEXT.

import { existsSync, mkdtempSync, readdirSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { basename, join, relative } from 'node:path';
import { parseArgs } from 'node:util';
import { runUnderWine, windowsPath } from './wine/runner.mjs';
import { ffmpegTools } from './workshop/ffmpeg.mjs';
import { main, step, WorkshopError } from './workshop/report.mjs';
import { checkStyle } from './workshop/style.mjs';
import { buildDir, buildTree, runInRoot, treeDir } from './workshop/tree.mjs';

const LAYERS = ['style', 'linux', 'linux-asan', 'linux-tsan', 'windows', 'javascript'];
const NAMES = {
  linux: 'portable code on Linux',
  'linux-asan': 'portable code under AddressSanitizer and UndefinedBehaviorSanitizer',
  'linux-tsan': 'portable code under ThreadSanitizer',
  windows: 'Windows programs under Wine',
  javascript: 'JavaScript in Node.js for Windows under Wine',
};
const resultsDir = mkdtempSync(join(tmpdir(), 'brisolte-test-'));
process.on('exit', () => rmSync(resultsDir, { recursive: true, force: true }));
// Far above what the slowest test program takes.
const PROGRAM_LIMIT_S = 600;

await main(async () => {
  const { values, positionals } = parseArgs({ allowPositionals: true, options: { only: { type: 'string' } } });
  const unknown = positionals.filter((layer) => !LAYERS.includes(layer));
  if (unknown.length > 0) {
    throw new WorkshopError(`unknown layer ${unknown.join(', ')}; there are: ${LAYERS.join(', ')}`);
  }
  const chosen = positionals.length > 0 ? positionals : LAYERS;
  const wanted = (path) => !values.only || basename(path).includes(values.only);
  const results = new Map();
  for (const layer of LAYERS.filter((name) => chosen.includes(name))) {
    if (layer === 'style') {
      await step('Formatter and linter', checkStyle);
    } else {
      const preset = layer === 'javascript' ? 'windows' : layer;
      await step(`Build: ${preset}`, () => buildTree(preset));
      results.set(layer, await step(`Tests: ${NAMES[layer]}`, (note) => runLayer(layer, wanted, note)));
    }
  }
  return report(results);
});

async function runLayer(layer, wanted, note) {
  const total = { passed: 0, failed: 0, broken: [] };
  const files = (layer === 'javascript' ? javascriptTests() : testPrograms(layer)).filter(wanted);
  for (const file of files) {
    note(basename(file));
    const run = layer === 'javascript' ? runJavascript : layer === 'windows' ? runWindowsProgram : runLinuxProgram;
    const { passed, failed, code } = await run(file, layer);
    total.passed += passed;
    total.failed += failed;
    // A program that dies in the middle has no failed test to show for it.
    if (failed > 0 || code !== 0 || passed === 0) {
      total.broken.push(`${relative(treeDir, file)} (exit code ${code})`);
    }
  }
  return total;
}

function report(results) {
  const all = [...results.values()];
  console.log('');
  for (const [layer, { passed, failed, broken }] of results) {
    console.log(`${NAMES[layer]}: ${passed} passed, ${failed} failed`);
    broken.forEach((file) => console.log(`  failed: ${file}`));
  }
  const sum = (field) => all.reduce((count, result) => count + result[field], 0);
  const broken = all.some((result) => result.broken.length > 0);
  console.log(`\n${sum('passed')} passed, ${Math.max(sum('failed'), broken ? 1 : 0)} failed`);
  return broken ? 1 : 0;
}

function testPrograms(preset) {
  const folder = join(buildDir(preset), 'tests');
  return filesIn(folder).filter((file) => /_tests(\.exe)?$/.test(file));
}

function javascriptTests() {
  const folder = join(treeDir, 'tests', 'js');
  return [...filesIn(folder), ...filesIn(join(folder, 'faults'))].filter((file) => file.endsWith('.test.js'));
}

function filesIn(folder) {
  return existsSync(folder) ? readdirSync(folder).map((name) => join(folder, name)) : [];
}

/** The file for a program's machine-readable results. */
const resultFile = (layer, program, extension) => join(resultsDir, `${layer}-${basename(program)}.${extension}`);

async function runLinuxProgram(program, layer) {
  const results = resultFile(layer, program, 'json');
  const env = {
    TSAN_OPTIONS: 'halt_on_error=1:second_deadlock_stack=1',
    ASAN_OPTIONS: 'detect_stack_use_after_return=1:strict_string_checks=1',
    UBSAN_OPTIONS: 'print_stacktrace=1',
  };
  const words = [program, '--gtest_brief=1', `--gtest_output=json:${results}`];
  const limited = ['timeout', '--signal=KILL', String(PROGRAM_LIMIT_S), ...words];
  const code = await runInRoot(limited, { env, writable: [resultsDir] });
  return { ...googleTestCounts(results), code };
}

async function runWindowsProgram(program, layer) {
  const results = resultFile(layer, program, 'json');
  const words = ['--gtest_brief=1', `--gtest_output=json:${windowsPath(results)}`];
  const code = await runUnderWine(program, words, { standins: true, timeout: PROGRAM_LIMIT_S, writable: [resultsDir] });
  return { ...googleTestCounts(results), code };
}

async function runJavascript(file, layer) {
  const tools = await ffmpegTools();
  const results = resultFile(layer, file, 'xml');
  const words = [
    ...['--test', '--test-isolation=none', '--expose-gc', '--test-reporter=spec', '--test-reporter-destination=stdout'],
    ...['--test-reporter=junit', `--test-reporter-destination=${windowsPath(results)}`, windowsPath(file)],
  ];
  const code = await runUnderWine('node', words, {
    standins: true,
    timeout: PROGRAM_LIMIT_S,
    readable: [tools],
    writable: [resultsDir],
    env: { BRISOLTE_FFMPEG_TOOLS: windowsPath(tools) },
  });
  return { ...junitCounts(results), code };
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

function textOf(file) {
  try {
    return readFileSync(file, 'utf8');
  } catch {
    return undefined;
  }
}
