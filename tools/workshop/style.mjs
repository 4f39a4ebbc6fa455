// The formatter and the linter over all of our own files, and the files that are made from others.

import { readdirSync } from 'node:fs';
import { join } from 'node:path';
import { areHostFunctionsCurrent } from '../host-functions/host-functions.mjs';
import { isReferenceCurrent } from '../reference/reference.mjs';
import { runThrough } from './processes.mjs';
import { npmPackages } from './npm-packages.mjs';
import { WorkshopError } from './report.mjs';
import { runInRoot, treeDir } from './tree.mjs';

const cppFiles = () =>
  ['src', 'tests'].flatMap((folder) =>
    readdirSync(join(treeDir, folder), { recursive: true })
      .filter((name) => /\.(h|cpp)$/.test(name))
      .map((name) => join(folder, name)),
  );

/** @throws {WorkshopError} when a file is not as the formatter, the linter or its source wants it */
export async function checkStyle() {
  await npmPackages(treeDir);
  if ((await runInRoot(['clang-format', '--dry-run', '--Werror', ...cppFiles()])) !== 0) {
    throw new WorkshopError('Files are not formatted; npm run format mends them.');
  }
  if ((await lint(treeDir)) !== 0) {
    throw new WorkshopError('The linter found something; its list is above.');
  }
  if (!(await isReferenceCurrent())) {
    throw new WorkshopError('docs/api.md is not what index.d.ts says any more; npm run reference makes it anew.');
  }
  if (!areHostFunctionsCurrent()) {
    throw new WorkshopError("src/binding/host_functions.inc is not what Node's headers say any more; npm run host-functions makes it anew.");
  }
}

/** Lints a folder with its own linter; gives the exit code. Not by npx, which would ask the registry for a missing one. */
export const lint = (folder) => runThrough([join(folder, 'node_modules', '.bin', 'eslint'), '.'], { cwd: folder });

/** Formats every C++ file in place. */
export const format = () => runInRoot(['clang-format', '-i', ...cppFiles()]);
