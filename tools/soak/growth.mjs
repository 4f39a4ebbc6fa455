// Whether what a process holds stays level, from figures taken one after the other.

// Heaps grow in steps, even late.
const HEAP_STEPS = 8 << 20;
// The index of an MP4: 64 bytes for each frame, 30 a second, and for each packet of two sounds, 38 a second and sound.
const INDEX_PER_MINUTE = 64 * 60 * (30 + 2 * 38.3);
const memory = { unit: 1 << 20, digits: 1, slack: HEAP_STEPS, perCycle: 4 << 10, perMinute: 1.2 * INDEX_PER_MINUTE };

/** What is watched: how it is called, how it is shown, and what it may grow by with each recording or minute. */
export const FIGURES = {
  privateBytes: { title: 'private bytes', ...memory },
  workingSet: { title: 'working set', ...memory },
  // A lock takes an event of the system when threads first meet at it, sooner or later.
  handles: { title: 'handles', slack: 10 },
  threads: { title: 'threads', slack: 2 },
  gdiObjects: { title: 'GDI objects', slack: 2 },
  windows: { title: 'windows (user objects)', slack: 1 },
  captureObjects: { title: 'capture service objects (COM)', slack: 2 },
  direct3dObjects: { title: 'Direct3D stand-in objects (COM)', slack: 2 },
};

const median = (numbers) => [...numbers].sort((a, b) => a - b)[Math.floor(numbers.length / 2)];

/**
 * One row a figure: at the first sample, after the first quarter, at the end, and how it grew from there on.
 *
 * The first quarter is warming up: heaps grow to what a recording takes, threads of pools start.
 * @param {object[]} samples with `at`, the recordings or minutes so far
 * @param {'perCycle'|'perMinute'} per what `at` counts
 * @param {object} system what is the system's own of the growth of a figure
 * @param {Record<string, number>} [system.each] with each recording or minute
 * @param {Record<string, number>} [system.once] in all, sooner or later
 * @returns {{title: string, first: string, early: string, late: string, grown: string, grows: boolean}[]}
 */
export function growth(samples, per, { each = {}, once = {} }) {
  const quarter = Math.max(1, Math.floor(samples.length / 4));
  const [early, late] = [samples.slice(quarter, 2 * quarter), samples.slice(-quarter)];
  const middle = (part, name) => median(part.map((sample) => sample[name]));
  const span = middle(late, 'at') - middle(early, 'at');
  return Object.entries(FIGURES).map(([name, { title, unit = 1, digits = 0, slack, [per]: allowed = 0 }]) => {
    const grown = middle(late, name) - middle(early, name) - (each[name] ?? 0) * span;
    const shown = (number) => (number / unit).toFixed(digits);
    return {
      title,
      first: shown(samples[0][name]),
      early: shown(middle(early, name)),
      late: shown(middle(late, name)),
      grown: `${shown(grown)}${each[name] ? ` beside the system's ${shown(each[name] * span)}` : ''}`,
      grows: grown > slack + allowed * span + (once[name] ?? 0),
    };
  });
}
