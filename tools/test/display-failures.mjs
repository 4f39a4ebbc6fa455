// Failures of the display that Wine draws on, which are none of what is tested.

// Wine makes a window on one connection to the X server and draws in it with OpenGL on another. A busy server may hear of the
// drawing first: then it knows no such window, and Wine ends the process.
const FAILURE = 'GLXBadWindow';

/** Runs something, and once more when it failed on a display that failed. `output` as in runThrough. */
export async function unlessDisplayFails(output, run) {
  const { stdout = process.stdout, stderr = process.stderr } = output ?? {};
  const errors = new WatchedOutput(stderr);
  const result = await run({ ...output, stderr: errors });
  if ((result.failed === 0 && result.code === 0) || !errors.found) {
    return result;
  }
  stdout.write(Buffer.from(`    the display failed (${FAILURE}); this runs once more\n`));
  return run(output);
}

/** Passes on what is written, and finds the failure in it. */
class WatchedOutput {
  #to;
  #end = '';
  found = false;

  constructor(to) {
    this.#to = to;
  }

  write(chunk) {
    this.#end += chunk.toString('latin1');
    this.found ||= this.#end.includes(FAILURE);
    this.#end = this.#end.slice(-FAILURE.length);
    this.#to.write(chunk);
  }
}
