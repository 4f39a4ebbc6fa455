// The tree's own npm packages, as the lock file names them.

import { existsSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { cacheDir, keyOf, withLock } from './cache.mjs';
import { runLogged } from './processes.mjs';
import { step } from './report.mjs';

// Without the scripts of others, and whole whatever the user's settings leave out elsewhere.
const INSTALL = ['npm', 'ci', '--include=dev', '--ignore-scripts', '--no-audit', '--no-fund'];

/** Installs the packages when they are missing or not those of the lock file. */
export async function npmPackages(treeDir) {
  const key = keyOf([readFileSync(join(treeDir, 'package-lock.json'), 'utf8'), INSTALL]);
  const stamp = join(treeDir, 'node_modules', '.installed-from');
  const current = () => existsSync(stamp) && readFileSync(stamp, 'utf8') === key;
  if (current()) {
    return;
  }
  await step('npm packages', (note) =>
    withLock(
      join(cacheDir, `npm-packages-${keyOf(treeDir)}`),
      () => note('another run is installing them; waiting'),
      async () => {
        if (!current()) {
          const log = join(cacheDir, 'npm-packages.log');
          await runLogged(INSTALL, { log, note, cwd: treeDir });
          writeFileSync(stamp, key);
        }
      },
    ),
  );
}
