// Measures the recorder: npm run bench [-- PART ...], with the parts encode, copies, packets, sounds, waits, sizes, growth, recordings, pauses.

import { pauses } from './bench/pauses.mjs';
import { copies, encoding, growth, packets, sizes, sounds } from './bench/portable.mjs';
import { recordings } from './bench/recordings.mjs';
import { waits } from './bench/waits.mjs';
import { main, step, WorkshopError } from './workshop/report.mjs';
import { removeScratch, scratchFolder } from './workshop/scratch.mjs';
import { buildTree } from './workshop/tree.mjs';

const PARTS = {
  encode: [encoding, 'Encoding 600 frames of 1920x1080: CPU seconds, best of three'],
  copies: [copies, 'Copying one frame: microseconds, best of 300'],
  packets: [packets, 'The writer queue: 100,000 packets of 4 KiB'],
  sounds: [sounds, 'Two stereo sounds of 48 kHz, 32-bit float, for 60 s'],
  waits: [waits, 'Waits of a millisecond in the threads of the sound, under Wine, 3000 of each'],
  sizes: [sizes, 'A frame by its size, libx264'],
  growth: [growth, 'A recording by its length, 30 frames of 160x90 a second'],
  recordings: [recordings, 'Whole recordings under Wine, 1280x720, 10 s each'],
  pauses: [pauses, "The longest pauses of an application's event loop in each call of Recorder, under Wine"],
};

const UNDER_WINE = ['recordings', 'pauses'];

await main(async () => {
  const wanted = process.argv.slice(2);
  const unknown = wanted.find((name) => !PARTS[name]);
  if (unknown) {
    throw new WorkshopError(`${unknown} is none of ${Object.keys(PARTS).join(', ')}`);
  }
  const names = Object.keys(PARTS).filter((name) => wanted.length === 0 || wanted.includes(name));
  if (names.some((name) => !UNDER_WINE.includes(name))) {
    await step('Build: the measurements', () => buildTree('bench', ['bench']));
  }
  if (names.some((name) => UNDER_WINE.includes(name))) {
    await step('Build: the module', () => buildTree('windows', ['brisolte', 'pattern', 'bare', 'standins']));
  }
  if (names.includes('waits')) {
    await step('Build: the waits', () => buildTree('windows', ['waits']));
  }
  // In memory, so that no disk is measured.
  const dir = scratchFolder('bench', '/dev/shm');
  try {
    for (const name of names) {
      const [measure, title] = PARTS[name];
      const rows = await step(`Measuring: ${name}`, (note) => measure(dir, note));
      console.log(`\n${title}\n\n${markdown(rows)}\n`);
    }
  } finally {
    removeScratch(dir);
  }
  return 0;
});

/** Rows, which are objects with the same keys, as a Markdown table. */
function markdown(rows) {
  const names = Object.keys(rows[0]);
  const line = (cells) => `| ${cells.join(' | ')} |`;
  return [line(names), line(names.map(() => '---')), ...rows.map((row) => line(names.map((name) => row[name])))].join('\n');
}
