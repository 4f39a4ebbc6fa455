// How long the waits of the threads of the sound are, and what an endpoint would lose with them.

import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { runUnderWine, windowsPath } from '../wine/runner.mjs';
import { WorkshopError } from '../workshop/report.mjs';
import { buildDir } from '../workshop/tree.mjs';

export async function waits(dir) {
  const result = join(dir, 'waits.json');
  const program = join(buildDir('windows'), 'pattern', 'waits.exe');
  const code = await runUnderWine(program, [windowsPath(result)], { screen: 'none', writable: [dir] });
  if (code !== 0) {
    throw new WorkshopError(`The waits ended with exit code ${code}.`);
  }
  return JSON.parse(readFileSync(result, 'utf8')).map((found) => ({
    wait: found.wait,
    'least, ms': milliseconds(found.least),
    median: milliseconds(found.median),
    '99 of 100 within': milliseconds(found.most99),
    most: milliseconds(found.most),
    'packets lost of 6000': found.lost,
    'the same while 9 ms are taken now and then': found.lostWithHiccups,
  }));
}

const milliseconds = (micro) => (micro / 1000).toFixed(2);
