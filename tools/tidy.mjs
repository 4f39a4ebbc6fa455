// Static analysis with clang-tidy: node tools/tidy.mjs [TEXT ...], only of files whose path contains one of the texts.

import { readFileSync } from 'node:fs';
import { cpus } from 'node:os';
import { join, relative } from 'node:path';
import { parseArgs } from 'node:util';
import { ffmpegLibraries, ffmpegOfTests } from './workshop/ffmpeg.mjs';
import { main, WorkshopError } from './workshop/report.mjs';
import { buildDir, buildTree, runInRoot, treeDir } from './workshop/tree.mjs';

await main(async () => {
  const { positionals: texts } = parseArgs({ allowPositionals: true });
  const wanted = (file) => texts.length === 0 || texts.some((text) => file.includes(text));
  // A file is looked at as the first of these compiles it: portable files as the host does, the others as Windows does.
  const presetOf = new Map();
  for (const preset of ['linux', 'windows', 'fuzz']) {
    await buildTree(preset);
    for (const file of ownSources(preset).filter((each) => wanted(each) && !presetOf.has(each))) {
      presetOf.set(file, preset);
    }
  }
  const jobs = [...presetOf];
  if (jobs.length === 0) {
    throw new WorkshopError(`no file has ${texts.join(' or ')} in its path`);
  }
  // The headers of the FFmpeg that the Windows build links.
  const readable = [await ffmpegLibraries(), await ffmpegOfTests()];
  let failed = 0;
  const work = async () => {
    for (let job; (job = jobs.shift()); ) {
      const [file, preset] = job;
      console.log(file);
      const code = await runInRoot(['clang-tidy', '--quiet', '-p', buildDir(preset), file], { readable });
      failed += code === 0 ? 0 : 1;
    }
  };
  await Promise.all(Array.from({ length: cpus().length }, work));
  console.log(failed === 0 ? 'nothing found' : `${failed} files with findings`);
  return failed === 0 ? 0 : 1;
});

function ownSources(preset) {
  const commands = JSON.parse(readFileSync(join(buildDir(preset), 'compile_commands.json'), 'utf8'));
  return commands.map(({ file }) => relative(treeDir, file)).filter((file) => /^(src|tests)\//.test(file));
}
