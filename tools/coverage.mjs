// Counts which lines and branches of the product the tests run: npm run coverage [-- linux|windows], both unless said
// otherwise. A failing test does not stop it; `npm test` is for that.

import { cpSync, mkdirSync, readFileSync } from 'node:fs';
import { basename, join } from 'node:path';
import { javascriptLayerTests, runJavascript, runLinuxProgram, runWindowsProgram, testPrograms } from './test/layers.mjs';
import { windowsPath } from './wine/runner.mjs';
import { main, step, WorkshopError } from './workshop/report.mjs';
import { buildDir, buildTree, runInRoot, treeDir } from './workshop/tree.mjs';

const HALVES = {
  linux: { title: 'The portable code, by its tests on Linux', preset: 'coverage', gcov: 'gcov', runTests: runPortable },
  windows: {
    title: 'The module, by the Windows programs and the JavaScript tests under Wine',
    preset: 'coverage-windows',
    gcov: 'x86_64-w64-mingw32ucrt-gcov',
    runTests: runUnderWindows,
  },
};

await main(async () => {
  const [only] = process.argv.slice(2);
  if (only && !HALVES[only]) {
    throw new WorkshopError('usage: npm run coverage [-- linux|windows]');
  }
  for (const name of only ? [only] : Object.keys(HALVES)) {
    const { title, preset, gcov, runTests } = HALVES[name];
    await step(`Build: ${preset}`, () => buildTree(preset));
    await forgetOldCounts(preset);
    await step(`Tests: ${preset}`, (note) => runTests(preset, note));
    const files = await step('Counting', () => summary(preset, gcov));
    console.log(`\n${title}\n`);
    report(files);
  }
  return 0;
});

function forgetOldCounts(preset) {
  return runInRoot(['find', buildDir(preset), '-name', '*.gcda', '-delete']);
}

async function runPortable(preset, note) {
  for (const program of testPrograms(preset)) {
    note(basename(program));
    await runLinuxProgram(program, preset);
  }
}

async function runUnderWindows(preset, note) {
  for (const program of testPrograms(preset)) {
    note(basename(program));
    await runWindowsProgram(program, preset);
  }
  // The counting module in a package of its own.
  const packageDir = join(buildDir(preset), 'package');
  mkdirSync(packageDir, { recursive: true });
  ['index.js', 'package.json'].forEach((file) => cpSync(join(treeDir, file), join(packageDir, file)));
  for (const file of javascriptLayerTests()) {
    note(basename(file));
    await runJavascript(file, preset, { env: { BRISOLTE_PACKAGE: windowsPath(packageDir) } });
  }
}

async function summary(preset, gcov) {
  const json = join(buildDir(preset), 'coverage.json');
  const scope = ['--root', treeDir, '--filter', 'src/', '--object-directory', buildDir(preset), buildDir(preset)];
  // Branches that only an exception of the standard library's takes are the compiler's, not the source's.
  const counting = ['--exclude-throw-branches', '--exclude-unreachable-branches', '--gcov-executable', gcov];
  const text = join(buildDir(preset), 'coverage.txt');
  const outputs = ['--json-summary', json, '--txt', text];
  const tolerant = ['--gcov-ignore-errors=all', '--gcov-ignore-parse-errors=all', '--merge-mode-functions=separate'];
  const code = await runInRoot(['gcovr', ...scope, ...counting, ...tolerant, ...outputs]);
  if (code !== 0) {
    throw new WorkshopError(`gcovr ended with ${code}`);
  }
  console.log(`    line by line: ${text}`);
  return JSON.parse(readFileSync(json, 'utf8')).files;
}

/** A table by room, a line for each and one for all. */
function report(files) {
  const rooms = new Map();
  for (const { filename, ...counts } of files) {
    const room = filename.split('/').slice(0, filename.startsWith('src/encoder/') ? 3 : 2).filter((part) => !/\.(h|cpp)$/.test(part)).join('/');
    for (const key of [room, 'all']) {
      const sum = rooms.get(key) ?? { line_covered: 0, line_total: 0, branch_covered: 0, branch_total: 0 };
      Object.keys(sum).forEach((name) => (sum[name] += counts[name]));
      rooms.set(key, sum);
    }
  }
  const percent = (covered, total) => (total === 0 ? '' : `${((100 * covered) / total).toFixed(1)} %`);
  console.log('| room | lines | of them run | branches | of them taken |\n| --- | --- | --- | --- | --- |');
  for (const [room, sum] of [...rooms].sort(([a], [b]) => (a === 'all') - (b === 'all') || a.localeCompare(b))) {
    const lines = [sum.line_total, percent(sum.line_covered, sum.line_total)];
    const branches = [sum.branch_total, percent(sum.branch_covered, sum.branch_total)];
    console.log(`| ${[room, ...lines, ...branches].join(' | ')} |`);
  }
  console.log('');
}
