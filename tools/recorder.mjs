// Runs Recorder's tests of what is left behind for longer: ends applications in the middle of their recordings, in each way and at
// random moments, and looks at what becomes of the file; kills recorders, and looks at what remains; and records over and over, and
// looks at what that costs the application.
// npm run recorder -- [--ends N] [--kills N] [--recordings N], 50, 100 and 200 unless said otherwise; 0 leaves that out.

import { parseArgs } from 'node:util';
import { runJavascript } from './test/layers.mjs';
import { main, step, WorkshopError } from './workshop/report.mjs';
import { buildTree, treeDir } from './workshop/tree.mjs';

await main(async () => {
  const { ends, kills, recordings } = parseArgs({
    options: {
      ends: { type: 'string', default: '50' },
      kills: { type: 'string', default: '100' },
      recordings: { type: 'string', default: '200' },
    },
  }).values;
  if (![ends, kills, recordings].every((number) => /^\d{1,5}$/.test(number))) {
    throw new WorkshopError('usage: npm run recorder -- [--ends N] [--kills N] [--recordings N]');
  }
  await step('Build: the module', () => buildTree('windows', ['brisolte', 'pattern', 'usage', 'standins']));
  const run = async (file, env, times) => {
    const options = { env, timeout: 600 + 60 * times };
    const { passed, failed, code } = await runJavascript(`${treeDir}/tests/js/${file}.test.js`, 'javascript', options);
    return code === 0 && failed === 0 && passed > 0;
  };
  const parts = [
    ['Applications that end', 'recorder-host', 'BRISOLTE_HOST_ENDS', ends],
    ['Recorders that are killed', 'recorder-kills', 'BRISOLTE_KILLS', kills],
    ['Recordings', 'recorder-usage', 'BRISOLTE_RECORDINGS', recordings],
  ];
  let good = true;
  for (const [title, file, name, times] of parts.filter(([, , , number]) => Number(number) > 0)) {
    good = (await step(title, () => run(file, { [name]: times }, Number(times)))) && good;
  }
  return good ? 0 : 1;
});
