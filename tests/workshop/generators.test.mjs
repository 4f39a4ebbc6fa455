// What other generators of CMake than the workshop's make of the tree.

import assert from 'node:assert/strict';
import { join } from 'node:path';
import { test } from 'node:test';
import { buildRoot } from '../../tools/workshop/build-root.mjs';
import { ffmpegLibraries } from '../../tools/workshop/ffmpeg.mjs';
import { npmPackages } from '../../tools/workshop/npm-packages.mjs';
import { outputOf } from '../../tools/workshop/processes.mjs';
import { sandboxed } from '../../tools/workshop/sandbox.mjs';
import { scratchFolder } from '../../tools/workshop/scratch.mjs';
import { treeDir } from '../../tools/workshop/tree.mjs';

test('a generator of several configurations puts the module where the loader looks', async () => {
  await npmPackages(treeDir);
  const [root, ffmpeg] = [await buildRoot(), await ffmpegLibraries()];
  const folder = scratchFolder('configurations');
  const run = (...words) => outputOf(sandboxed(root, words, { readable: [treeDir, ffmpeg], writable: [folder], cwd: treeDir }));
  const options = ['--toolchain', 'cmake/mingw-w64.cmake', `-DFFMPEG_ROOT=${ffmpeg}`, '-DBRISOLTE_TESTS=OFF'];
  run('cmake', '-S', treeDir, '-B', folder, '-G', 'Ninja Multi-Config', ...options);
  for (const configuration of ['Release', 'Debug']) {
    const made = run('ninja', '-C', folder, '-f', `build-${configuration}.ninja`, '-t', 'query', 'brisolte', 'recorder');
    for (const name of ['brisolte.node', 'recorder.node']) {
      assert.ok(made.includes(`${join(treeDir, 'prebuilds', 'win32-x64', name)}\n`), made);
    }
  }
});
