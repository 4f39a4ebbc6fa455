// Builds a preset: node tools/build.mjs [PRESET [TARGET ...]], the windows one unless said otherwise

import { parseArgs } from 'node:util';
import { main, WorkshopError } from './workshop/report.mjs';
import { buildTree, presets } from './workshop/tree.mjs';

await main(() => {
  const { positionals } = parseArgs({ allowPositionals: true });
  const [preset = 'windows', ...targets] = positionals;
  if (!presets.includes(preset)) {
    throw new WorkshopError(`unknown preset ${preset}; there are: ${presets.join(', ')}`);
  }
  return buildTree(preset, targets);
});
