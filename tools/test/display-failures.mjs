// Failures of the display that Wine draws on, which are none of what is tested.

// Rarely, when a process makes a further Direct3D device on a busy machine, the X server answers Wine's drawing with this error,
// and Wine ends the process. Why is not known: hundreds of devices made and released in two dozen processes at once do not
// show it. That a file ran again is said each time.
const FAILURE = 'GLXBadWindow';

// It has been seen twice in a row.
const RUNS = 3;

/** Runs something, and again, up to three times in all, while it fails on a display that fails. `output` as in runThrough. */
export async function unlessDisplayFails(output, run) {
  const { stdout = process.stdout, stderr = process.stderr } = output ?? {};
  for (let runs = 1; ; runs += 1) {
    const errors = new WatchedOutput(stderr);
    const result = await run({ ...output, stderr: errors });
    if ((result.failed === 0 && result.code === 0) || !errors.found || runs === RUNS) {
      return result;
    }
    stdout.write(Buffer.from(`    the display failed (${FAILURE}); this runs again\n`));
  }
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
