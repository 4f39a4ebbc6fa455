// Builds the last commit twice and compares what users would get: npm run reproduce [-- --libraries]
//
// The second tree lies in a folder of another kind of name and is compiled without the compiler cache. With --libraries it has an
// empty cache of its own as well, so that the build root, FFmpeg and the codec libraries are made anew, which takes half an hour.

import { createHash } from 'node:crypto';
import { cpSync, mkdirSync, readdirSync, readFileSync } from 'node:fs';
import { join } from 'node:path';
import { parseArgs } from 'node:util';
import { npmPackages } from './workshop/npm-packages.mjs';
import { outputOf, runThrough } from './workshop/processes.mjs';
import { main, step, WorkshopError } from './workshop/report.mjs';
import { removeScratch, scratchFolder } from './workshop/scratch.mjs';
import { treeDir } from './workshop/tree.mjs';

await main(async () => {
  const { values } = parseArgs({ options: { libraries: { type: 'boolean', default: false } } });
  await npmPackages(treeDir);
  const scratch = scratchFolder('reproduce');
  try {
    const ownCache = values.libraries ? { BRISOLTE_CACHE: join(scratch, 'cache') } : {};
    const first = await step('The first build', () => build(join(scratch, 'first'), {}));
    const second = await step('The second build', () => build(join(scratch, 'Ein zweites Gerät'), { CCACHE_DISABLE: '1', ...ownCache }));
    return show(first, second);
  } finally {
    removeScratch(scratch);
  }
});

/** Builds a clone of this tree in the folder; gives the SHA-256 of each native file by its name. */
async function build(folder, env) {
  mkdirSync(folder);
  outputOf(['git', 'clone', '--quiet', treeDir, folder]);
  cpSync(join(treeDir, 'node_modules'), join(folder, 'node_modules'), { recursive: true });
  const words = [process.execPath, 'tools/build.mjs', 'windows', 'brisolte'];
  if ((await runThrough(words, { cwd: folder, env: { ...process.env, ...env } })) !== 0) {
    throw new WorkshopError(`${folder} was not built; the lines above say why`);
  }
  const natives = join(folder, 'prebuilds', 'win32-x64');
  const sha256 = (name) => createHash('sha256').update(readFileSync(join(natives, name))).digest('hex');
  return new Map(readdirSync(natives).sort().map((name) => [name, sha256(name)]));
}

function show(first, second) {
  const names = [...new Set([...first.keys(), ...second.keys()])];
  const different = names.filter((name) => first.get(name) !== second.get(name));
  console.log('');
  names.forEach((name) => console.log(`${first.get(name)}  ${name}${different.includes(name) ? `, or ${second.get(name)}` : ''}`));
  console.log(different.length === 0 ? '\nboth builds gave the same files' : `\ndifferent: ${different.join(', ')}`);
  return different.length === 0 ? 0 : 1;
}
