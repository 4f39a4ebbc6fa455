// Runs a command in the build root, in this tree: node tools/in-root.mjs COMMAND [ARGUMENT ...]

import { main } from './workshop/report.mjs';
import { runInRoot } from './workshop/tree.mjs';

await main(() => runInRoot(process.argv.slice(2)));
