// What the command line writes to standard error while it records with --verbose: the log, between what it shows of its progress.

const LOG_LINE = /^(brisolte|ffmpeg|node) (debug|info|warning|error): (.*)$/;

/** Keeps the log, and passes on the rest, or all of it. */
export class CommandLog {
  /** @type {{source: string, level: string, text: string}[]} */
  entries = [];
  #decoder = new TextDecoder();
  #rest = '';
  #out;
  #all;

  /**
   * @param {{write(text: string): void}} out
   * @param {boolean} all whether the log is passed on, too
   */
  constructor(out, all) {
    this.#out = out;
    this.#all = all;
  }

  /** @param {Buffer} chunk of whatever size */
  write(chunk) {
    const lines = (this.#rest + this.#decoder.decode(chunk, { stream: true })).split('\n');
    this.#rest = lines.pop();
    lines.forEach((line) => this.#take(line.replace(/\r$/, '')));
  }

  #take(line) {
    const found = LOG_LINE.exec(line);
    if (found) {
      const [, source, level, text] = found;
      this.entries.push({ source, level, text });
    }
    if (this.#all || !found) {
      this.#out.write(`${line}\n`);
    }
  }
}
