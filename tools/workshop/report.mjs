// What a person at the terminal sees: the name of each step, a sign of life while it runs, how long it took.

const HEARTBEAT_MS = 15_000;
const startedAt = Date.now();

// Steps within steps: only the innermost shows that it is alive.
const running = [];

const seconds = (since) => `${Math.round((Date.now() - since) / 1000)} s`;

/** A failure whose message is all a person needs; it is shown without a stack. */
export class WorkshopError extends Error {}

/**
 * Runs `work` under a visible name.
 * @template T
 * @param {string} name
 * @param {(note: (text: string) => void) => Promise<T>} work gets a function that tells where it is, shown with the heartbeat
 * @returns {Promise<T>}
 */
export async function step(name, work) {
  const since = Date.now();
  let where = '';
  console.log(`==> ${name}`);
  const self = Symbol(name);
  running.push(self);
  const heartbeat = setInterval(() => {
    if (running.at(-1) === self) {
      console.log(`    ... ${seconds(since)}${where && `: ${where}`}`);
    }
  }, HEARTBEAT_MS);
  try {
    const result = await work((text) => {
      where = text;
    });
    console.log(`    done in ${seconds(since)}`);
    return result;
  } finally {
    clearInterval(heartbeat);
    running.splice(running.indexOf(self), 1);
  }
}

/** Runs a command's main routine; turns a failure into a message and an exit code. */
export async function main(routine) {
  try {
    process.exitCode = (await routine()) ?? 0;
  } catch (error) {
    console.error(error instanceof WorkshopError ? `\n${error.message}` : error);
    console.error(`failed after ${seconds(startedAt)}`);
    process.exitCode = 1;
  }
}
