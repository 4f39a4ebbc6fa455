// The tests of the package whose FFmpeg is under the LGPL, under Wine.

import { join } from 'node:path';
import { windowsPath } from '../wine/runner.mjs';
import { step } from '../workshop/report.mjs';
import { scratchFolder } from '../workshop/scratch.mjs';
import { buildTree, treeDir } from '../workshop/tree.mjs';
import { installPackage } from './installed-package.mjs';
import { runJavascript } from './layers.mjs';

/** Installs what has been packed and runs its tests; gives the exit code. */
export async function testLgplPackage(packed) {
  await step('Build: what the tests record', () => buildTree('windows', ['pattern', 'standins']));
  const { project, folder } = installPackage(packed, scratchFolder('lgpl-test'));
  const options = { writable: [project], env: { BRISOLTE_PACKAGE: windowsPath(folder) } };
  const run = () => runJavascript(join(treeDir, 'tests', 'lgpl', 'lgpl.test.js'), 'lgpl', options);
  const { passed, failed, code } = await step('Tests: the package with an FFmpeg under the LGPL', run);
  console.log(`\n${passed} passed, ${failed} failed`);
  return failed > 0 || passed === 0 ? 1 : code;
}
