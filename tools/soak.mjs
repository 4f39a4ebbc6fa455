// Records and takes screenshots over and over, then records once for long, and tells whether what the process holds stays
// level and whether it keeps the capture service's library.
// npm run soak [-- --cycles N --minutes N --json FILE]: 1000 of each and 30 minutes unless said otherwise; 0 leaves one out.
// All that was measured goes to FILE.

import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { parseArgs } from 'node:util';
import { decode } from './soak/decode.mjs';
import { growth } from './soak/growth.mjs';
import { hostPath, runUnderWine, windowsPath } from './wine/runner.mjs';
import { buildRoot } from './workshop/build-root.mjs';
import { main, step, WorkshopError } from './workshop/report.mjs';
import { sandboxed } from './workshop/sandbox.mjs';
import { removeScratch, scratchFolder } from './workshop/scratch.mjs';
import { buildDir, buildTree, treeDir } from './workshop/tree.mjs';

await main(async () => {
  const options = { cycles: { type: 'string', default: '1000' }, minutes: { type: 'string', default: '30' }, json: { type: 'string' } };
  const { values } = parseArgs({ options });
  const [cycles, minutes] = [Number(values.cycles), Number(values.minutes)];
  if (!Number.isInteger(cycles) || cycles < 0 || !(minutes >= 0)) {
    throw new WorkshopError('usage: npm run soak -- [--cycles N] [--minutes N] [--json FILE]');
  }
  await step('Build: the module', () => buildTree('windows', ['brisolte', 'pattern', 'usage', 'bare', 'standins']));
  const often = cycles > 0 && (await step(`${cycles} screenshots and recordings`, () => soak({ cycles })));
  const long = minutes > 0 && (await step(`One recording of ${minutes} minutes`, () => soak({ minutes })));
  if (values.json) {
    writeFileSync(values.json, JSON.stringify({ often, long }));
  }
  const verdicts = [];
  if (often) {
    verdicts.push(show(`${cycles} screenshots and recordings`, often, growth(often.samples, 'perCycle', { each: keptOfEach(often, cycles) })));
  }
  if (long) {
    verdicts.push(show(`One recording of ${minutes} minutes`, long, growth(long.samples, 'perMinute', { once: keptOnce(long.bare) })));
  }
  return verdicts.every(Boolean) ? 0 : 1;
});

/** What a cycle makes the system keep: recordings and screenshots ask for two factories of the capture service each, and a
 * recording makes one device. */
function keptOfEach({ bare: { RoGetActivationFactory: handles, D3D11CreateDevice: bytes }, attempts }, cycles) {
  return { handles: 2 * handles * (1 + attempts / cycles), privateBytes: bytes, workingSet: bytes };
}

/** What a device keeps of its commands while it lives. */
function keptOnce({ commands: [first] }) {
  return { privateBytes: first, workingSet: first };
}

async function soak({ cycles = 0, minutes = 0 }) {
  const scratchDir = scratchFolder('soak');
  try {
    const outputDir = join(scratchDir, 'out');
    mkdirSync(outputDir);
    const [requestFile, resultFile] = ['request.json', 'result.json'].map((name) => join(scratchDir, name));
    const request = {
      ...{ cycles, minutes },
      packageDir: windowsPath(treeDir),
      programsDir: windowsPath(join(buildDir('windows'), 'pattern')),
      scratchDir: windowsPath(scratchDir),
      outputDir: windowsPath(outputDir),
      resultFile: windowsPath(resultFile),
    };
    writeFileSync(requestFile, JSON.stringify(request));
    const words = ['--expose-gc', windowsPath(join(treeDir, 'tools/soak/recorder.cjs')), windowsPath(requestFile)];
    const timeout = 300 + 6 * cycles + 90 * minutes;
    const code = await runUnderWine('node', words, { standins: true, outputOnly: true, timeout, writable: [scratchDir] });
    if (code !== 0) {
      throw new WorkshopError(`The recordings ended with exit code ${code}; the lines above say why.`);
    }
    const outcome = JSON.parse(readFileSync(resultFile, 'utf8'));
    const root = await buildRoot();
    const played = decode(hostPath(outcome.file), (each) => sandboxed(root, each, { writable: [scratchDir] }));
    return { ...outcome, played };
  } finally {
    removeScratch(scratchDir);
  }
}

function ofCalls({ RoGetActivationFactory: handles, D3D11CreateDevice: bytes }) {
  return `${handles} handles of each RoGetActivationFactory and ${Math.round(bytes / 1024)} KiB of each D3D11CreateDevice`;
}

function ofCommands({ commands }) {
  const inMiB = commands.map((bytes) => `${(bytes / (1 << 20)).toFixed(1)} MiB`);
  return `${inMiB.join(', then ')} of as many commands of a living device each`;
}

/** Shows the figures of one soak; gives whether all is level and the file whole. */
function show(title, { played, seconds, bare }, rows) {
  console.log(`\n${title}; memory in MiB; early and late are the medians of the second and the last quarter\n`);
  console.table(Object.fromEntries(rows.map(({ title: name, ...row }) => [name, row])));
  const whole = played.opens && played.errors === '' && played.frames > 0 && (!seconds || Math.abs(played.seconds - seconds) < 2);
  const length = seconds ? ` of ${seconds.toFixed(1)} s` : '';
  console.log(
    `the file${seconds ? '' : ' of the last recording'}: ${whole ? 'whole' : 'NOT whole'}, ${played.seconds.toFixed(1)} s${length}, ` +
      `${played.frames} frames, ${played.sounds} sounds ${played.errors}`,
  );
  console.log(`without our code the system keeps ${bare.commands ? ofCommands(bare) : ofCalls(bare)}`);
  return whole && rows.every(({ grows }) => !grows);
}
