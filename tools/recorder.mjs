// Runs Recorder's tests of what is left behind for longer: ends applications in the middle of their recordings, in each way and at
// random moments, and looks at what becomes of the file; and records over and over, and looks at what that costs the application.
// npm run recorder -- [--ends N] [--recordings N], 50 and 200 unless said otherwise.

import { parseArgs } from 'node:util';
import { runJavascript } from './test/layers.mjs';
import { main, step, WorkshopError } from './workshop/report.mjs';
import { buildTree, treeDir } from './workshop/tree.mjs';

await main(async () => {
  const { ends, recordings } = parseArgs({
    options: { ends: { type: 'string', default: '50' }, recordings: { type: 'string', default: '200' } },
  }).values;
  if (![ends, recordings].every((number) => /^[1-9]\d{0,4}$/.test(number))) {
    throw new WorkshopError('usage: npm run recorder -- [--ends N] [--recordings N]');
  }
  await step('Build: the module', () => buildTree('windows', ['brisolte', 'pattern', 'usage', 'standins']));
  const run = async (file, env, times) => {
    const options = { env, timeout: 600 + 60 * times };
    const { passed, failed, code } = await runJavascript(`${treeDir}/tests/js/${file}.test.js`, 'javascript', options);
    return code === 0 && failed === 0 && passed > 0;
  };
  const whole = await step('Applications that end', () => run('recorder-host', { BRISOLTE_HOST_ENDS: ends }, Number(ends)));
  const level = await step('Recordings', () => run('recorder-usage', { BRISOLTE_RECORDINGS: recordings }, Number(recordings)));
  return whole && level ? 0 : 1;
});
