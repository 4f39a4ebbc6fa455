// Runs on Windows itself, without Wine, stand-ins or the workshop: the tests that a real system can run, against an installed
// package. node tools/on-windows.mjs calls|recordings
//
// BRISOLTE_PACKAGE is the folder of the installed package, BRISOLTE_TEST_PROGRAMS that of the test windows' programs, and
// BRISOLTE_FFMPEG_TOOLS that of ffmpeg.exe and ffprobe.exe.

import { spawnSync } from 'node:child_process';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';

// Not here: tests that make calls of the system fail, which needs the stand-ins; that fill a disk made for it; that need a
// sound device of which they know what it plays; that expect what Wine lacks.
const GROUPS = {
  calls: ['js/arguments', 'js/module', 'package/hosts'],
  recordings: ['js/encoders', 'js/lifecycle', 'js/lists', 'js/paths', 'js/region', 'js/screen', 'js/screenshot', 'js/session', 'js/settings', 'js/timing', 'js/window'],
};

const testsDir = fileURLToPath(new URL('../tests', import.meta.url));
const files = GROUPS[process.argv[2]];
if (!files) {
  console.error(`usage: node tools/on-windows.mjs ${Object.keys(GROUPS).join('|')}`);
  process.exit(2);
}
const failed = files.filter((file) => {
  console.log(`\n${file}`);
  const words = ['--expose-gc', join(testsDir, `${file}.test.js`)];
  return spawnSync(process.execPath, words, { stdio: ['ignore', 'inherit', 'inherit'] }).status !== 0;
});
console.log(failed.length > 0 ? `\nfailed: ${failed.join(', ')}` : '\nall passed');
process.exitCode = failed.length > 0 ? 1 : 0;
