// Failures of the display that Wine draws on, which are none of what is tested.

// Rarely, when a process makes a further Direct3D device on a busy machine, the X server answers Wine's drawing with this error,
// and Wine ends the process. Why is not known: hundreds of devices made and released in two dozen processes at once do not
// show it. That a file ran again is said each time.
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
