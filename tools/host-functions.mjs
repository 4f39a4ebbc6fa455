// Writes the calls of the host's Node-API functions from Node's headers: npm run host-functions
//
// What it writes is kept with the sources, so that CMake alone builds the module.

import { writeFileSync } from 'node:fs';
import { hostFunctionsPath, hostFunctionsText } from './host-functions/host-functions.mjs';
import { npmPackages } from './workshop/npm-packages.mjs';
import { main } from './workshop/report.mjs';
import { treeDir } from './workshop/tree.mjs';

await main(async () => {
  await npmPackages(treeDir);
  writeFileSync(hostFunctionsPath, hostFunctionsText());
});
