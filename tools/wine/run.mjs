// Runs a Windows program under Wine: node tools/wine/run.mjs [options] PROGRAM.exe|node [argument ...]

import { parseArgs } from 'node:util';
import { main } from '../workshop/report.mjs';
import { runUnderWine } from './runner.mjs';

const USAGE = `usage: node tools/wine/run.mjs [options] PROGRAM.exe|node [argument ...]
  --standins          with the stand-ins for what Wine lacks
  --clock             with a clock that can be set: BRISOLTE_CLOCK names the file of what it shows
  --timeout SECONDS   time limit, 300 unless said otherwise
  --screen WxH|none   size of the screen, 1280x720 unless said otherwise; none for a session without a display
  --scale PERCENT     display scaling, 100 unless said otherwise
  --node VERSION      which Node.js for Windows
  --debug CHANNELS    Wine's debug output, as WINEDEBUG takes it`;

const OPTIONS = {
  standins: { type: 'boolean' },
  clock: { type: 'boolean' },
  timeout: { type: 'string' },
  screen: { type: 'string' },
  scale: { type: 'string' },
  node: { type: 'string' },
  debug: { type: 'string' },
};

// Options end at the program's name: what follows belongs to the program.
function splitAtProgram(words) {
  let at = 0;
  while (at < words.length && words[at].startsWith('--')) {
    const name = words[at].slice(2).split('=')[0];
    at += OPTIONS[name]?.type === 'string' && !words[at].includes('=') ? 2 : 1;
  }
  return [words.slice(0, at), words.slice(at)];
}

await main(async () => {
  const [optionWords, [program, ...words]] = splitAtProgram(process.argv.slice(2));
  const { values } = parseArgs({ args: optionWords, options: OPTIONS });
  if (!program) {
    console.error(USAGE);
    return 2;
  }
  return runUnderWine(program, words, {
    ...values,
    timeout: Number(values.timeout ?? 300),
    scale: Number(values.scale ?? 100),
    env: values.debug ? { WINEDEBUG: values.debug } : {},
  });
});
