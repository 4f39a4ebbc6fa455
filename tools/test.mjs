// Builds everything and runs every test: node tools/test.mjs [layer ...] [--only TEXT] [--scale PERCENT]
//
// Layers: style (formatter, linter), workshop (what builds and runs all this), linux, linux-asan, linux-tsan (the portable
// code, also under sanitizers), fuzz, windows (the same and the Windows code under Wine), recorder (Recorder and the command
// line, with a stand-in for the module), javascript (the module that ships, in Node.js for Windows under Wine), package (what
// users install: its contents, its types, and its examples under Wine).
// --only runs the test programs or files whose name contains TEXT, --scale those of Windows on a display of this scaling.

import { basename } from 'node:path';
import { parseArgs } from 'node:util';
import { layers, runLayer } from './test/layers.mjs';
import { main, step, WorkshopError } from './workshop/report.mjs';
import { checkStyle } from './workshop/style.mjs';
import { buildTree } from './workshop/tree.mjs';

await main(async () => {
  const { values, positionals } = parseArgs({ allowPositionals: true, options: { only: { type: 'string' }, scale: { type: 'string' } } });
  const scales = values.scale ? [Number(values.scale)] : undefined;
  const all = ['style', ...Object.keys(layers)];
  const unknown = positionals.filter((name) => !all.includes(name));
  if (unknown.length > 0) {
    throw new WorkshopError(`unknown layer ${unknown.join(', ')}; there are: ${all.join(', ')}`);
  }
  const chosen = positionals.length > 0 ? positionals : all;
  const wanted = (path) => !values.only || basename(path).includes(values.only);
  if (chosen.includes('style')) {
    await step('Formatter and linter', checkStyle);
  }
  const results = new Map();
  for (const [name, { title, preset }] of Object.entries(layers)) {
    if (chosen.includes(name)) {
      if (preset) {
        await step(`Build: ${preset}`, () => buildTree(preset));
      }
      results.set(title, await step(`Tests: ${title}`, (note) => runLayer(name, wanted, note, scales)));
    }
  }
  if (results.size > 0 && [...results.values()].every(({ files }) => files === 0)) {
    throw new WorkshopError(`no test program or file has "${values.only}" in its name`);
  }
  return report(results);
});

function report(results) {
  const all = [...results.values()];
  console.log('');
  for (const [title, { passed, failed, broken }] of results) {
    console.log(`${title}: ${passed} passed, ${failed} failed`);
    broken.forEach((file) => console.log(`  failed: ${file}`));
  }
  const sum = (field) => all.reduce((count, result) => count + result[field], 0);
  const broken = all.some((result) => result.broken.length > 0);
  console.log(`\n${sum('passed')} passed, ${Math.max(sum('failed'), broken ? 1 : 0)} failed`);
  return broken ? 1 : 0;
}
