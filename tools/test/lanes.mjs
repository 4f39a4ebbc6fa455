// Running files side by side, each with its output kept together.

import { basename } from 'node:path';

/**
 * Runs each of the files: those named `first` before the others, `lanes` at a time, and those named `alone` after all others,
 * one after the other. A name is the end of a path.
 * @param {string[]} files
 * @param {{lanes: number, first?: string[], alone?: string[]}} order
 * @param {(text: string) => void} note is told which files are running
 * @param {(file: string, output?: object) => Promise<void>} run runs one; `output` says where its output goes, if not through
 */
export async function inLanes(files, { lanes, first = [], alone = [] }, note, run) {
  const running = new Set();
  const runOne = async (file, output) => {
    running.add(basename(file));
    note([...running].join(', '));
    await run(file, output);
    running.delete(basename(file));
  };
  const [timed, others] = parted(files, alone);
  const queue = parted(others, first).flat();
  const lane = async () => {
    for (let file; (file = queue.shift()); ) {
      const output = new HeldOutput();
      await runOne(file, { stdout: output, stderr: output });
      output.release();
    }
  };
  // One by itself shows what it says as it says it.
  if (lanes > 1 && queue.length > 1) {
    await Promise.all(Array.from({ length: lanes }, lane));
  }
  for (const file of [...queue, ...timed]) {
    await runOne(file);
  }
}

/** The files with one of these names, in the names' order, and the others. */
function parted(files, names) {
  const named = names.flatMap((name) => files.filter((file) => file.endsWith(`/${name}`)));
  return [named, files.filter((file) => !named.includes(file))];
}

/** Keeps what is written until it can be shown in one piece. */
export class HeldOutput {
  #chunks = [];

  write(chunk) {
    this.#chunks.push(chunk);
  }

  release() {
    process.stdout.write(Buffer.concat(this.#chunks));
  }
}
