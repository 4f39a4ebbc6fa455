// Looks for inputs that break the portable code: npm run fuzz [-- SECONDS [TEXT]], SECONDS (60) for each program with TEXT
// in its name. What was found before is built upon; it is kept in build/fuzz.

import { mkdirSync } from 'node:fs';
import { basename, join } from 'node:path';
import { parseArgs } from 'node:util';
import { fuzz, fuzzers } from './test/layers.mjs';
import { main, step, WorkshopError } from './workshop/report.mjs';
import { buildDir, buildTree } from './workshop/tree.mjs';

await main(async () => {
  const { positionals } = parseArgs({ allowPositionals: true });
  const [seconds = '60', text = ''] = positionals;
  if (!(Number(seconds) > 0)) {
    throw new WorkshopError('usage: npm run fuzz [-- SECONDS [TEXT]]');
  }
  await step('Build: fuzz', () => buildTree('fuzz'));
  const programs = fuzzers().filter((file) => basename(file).includes(text));
  if (programs.length === 0) {
    throw new WorkshopError(`no fuzzer has "${text}" in its name`);
  }
  let broken = 0;
  for (const program of programs) {
    const corpus = join(buildDir('fuzz'), `corpus-${basename(program)}`);
    mkdirSync(corpus, { recursive: true });
    const options = [`-max_total_time=${seconds}`, '-print_final_stats=1', corpus];
    broken += (await step(basename(program), () => fuzz(program, options))) === 0 ? 0 : 1;
  }
  return broken === 0 ? 0 : 1;
});
