// Makes random calls of every method, on several instances and threads, and compares each answer with what is documented; and
// ends worker threads in the middle of their calls while another recording must go on.
// npm run hostile -- [--minutes N] [--seed N]: for so long, from that seed on; a seed alone makes its calls once.

import { parseArgs } from 'node:util';
import { runJavascript } from './test/layers.mjs';
import { main, step, WorkshopError } from './workshop/report.mjs';
import { buildTree, treeDir } from './workshop/tree.mjs';

await main(async () => {
  const { values } = parseArgs({ options: { minutes: { type: 'string' }, seed: { type: 'string' } } });
  const { seed, minutes = seed === undefined ? '5' : undefined } = values;
  if ((seed !== undefined && !/^\d{1,10}$/.test(seed)) || (minutes !== undefined && !(Number(minutes) > 0))) {
    throw new WorkshopError('usage: npm run hostile -- [--minutes N] [--seed N]');
  }
  await step('Build: the module', () => buildTree('windows', ['brisolte', 'pattern', 'standins']));
  const env = {
    ...(seed === undefined ? {} : { BRISOLTE_HOSTILE_SEED: seed }),
    ...(minutes === undefined ? {} : { BRISOLTE_HOSTILE_MINUTES: minutes }),
  };
  const { passed, failed, code } = await step('Hostile calls', () =>
    runJavascript(`${treeDir}/tests/js/hostile.test.js`, 'javascript', { env, timeout: 600 + 60 * Number(minutes ?? 0) }),
  );
  return code === 0 && failed === 0 && passed > 0 ? 0 : 1;
});
