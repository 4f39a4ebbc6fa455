// Compiles what talks to FFmpeg against another FFmpeg's headers: node tools/headers.mjs [SERIES], where SERIES is one of
// Debian's; without it the newest, of its unstable branch. `npm test` does so for the oldest.

import { parseArgs } from 'node:util';
import { checkAgainst } from './workshop/headers.mjs';
import { main } from './workshop/report.mjs';

await main(async () => {
  const { positionals } = parseArgs({ allowPositionals: true });
  const [series = 'sid'] = positionals;
  const { version, failures, sources } = await checkAgainst(series, new Date().toISOString().slice(0, 10));
  failures.forEach(({ output }) => console.error(output));
  const compiled = `${sources.length - failures.length} of ${sources.length} files compile without a warning`;
  console.log(`${compiled} against FFmpeg ${version} of Debian ${series}`);
  return failures.length === 0 ? 0 : 1;
});
