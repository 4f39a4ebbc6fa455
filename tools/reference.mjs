// Writes docs/api.md from the documentation comments of index.d.ts: node tools/reference.mjs

import { writeFileSync } from 'node:fs';
import { referencePath, referenceText } from './reference/reference.mjs';
import { npmPackages } from './workshop/npm-packages.mjs';
import { main } from './workshop/report.mjs';
import { treeDir } from './workshop/tree.mjs';

await main(async () => {
  await npmPackages(treeDir);
  writeFileSync(referencePath, await referenceText());
});
