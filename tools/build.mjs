// Builds a preset: node tools/build.mjs [windows|linux|linux-asan|linux-tsan] [target ...]

import { main } from './workshop/report.mjs';
import { buildTree } from './workshop/tree.mjs';

const [preset = 'windows', ...targets] = process.argv.slice(2);
await main(() => buildTree(preset, targets));
