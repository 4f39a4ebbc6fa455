// What building the tree asks of a build folder.

import assert from 'node:assert/strict';
import { writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { scratchFolder } from '../../tools/workshop/scratch.mjs';
import { isConfiguredIn } from '../../tools/workshop/tree.mjs';

test('a build folder is configured anew in another build root, where the compilers may have other names', () => {
  const folder = scratchFolder('configured');
  assert.equal(isConfiguredIn(folder, '/cache/build-root-1'), false);
  writeFileSync(join(folder, 'build-root'), 'build-root-1');
  assert.equal(isConfiguredIn(folder, '/cache/build-root-1'), true);
  assert.equal(isConfiguredIn(folder, '/cache/build-root-2'), false);
});
