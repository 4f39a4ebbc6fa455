'use strict';

// Windows with the known picture on the real desktop.

const { spawn } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');
const { Picture } = require('./pattern');
const { scratchFile } = require('./scratch');
const { waitFor } = require('./wait');

const folder =
  process.env.BRISOLTE_TEST_PROGRAMS ?? path.join(__dirname, '..', '..', '..', 'build', 'windows', 'pattern');

/** A library with the name of one of FFmpeg's, and nothing of it. */
const foreignLibrary = path.join(folder, 'foreign', 'avcodec-61.dll');
/** Node.js as a library, for a program that has Node-API under other names. */
const nodeLibrary = path.join(folder, 'foreign', 'libnode.dll');
/** The programs that the tests start. */
const programs = Object.fromEntries(['pattern', 'hold', 'tone', 'usage', 'bare'].map((name) => [name, path.join(folder, `${name}.exe`)]));

/** How many pictures a pattern window has painted, from its progress file. */
const painted = (progress) => Number(fs.readFileSync(progress, 'latin1')) || 0;

/** Waits until a pattern window has painted so many more pictures. */
function paintedMore(progress, count, within = 60000) {
  const goal = painted(progress) + count;
  return waitFor(`${count} more pictures`, () => painted(progress) >= goal, within);
}

/** A running pattern.exe. */
class PatternWindow {
  constructor({ title = 'Known picture', x = 0, y = 0, width = 640, height = 360, ...rest } = {}) {
    const { framed = false, below = false, fps = 60, palette = 0 } = rest;
    this.title = title;
    this.palette = palette;
    this.files = { ready: scratchFile('ready'), control: scratchFile('control'), progress: scratchFile('progress') };
    this.errors = scratchFile('err');
    const numbers = { x, y, width, height, fps, palette, seconds: 300 };
    const words = [
      ...Object.entries({ title, ...numbers, ...this.files }).flatMap(([name, value]) => [`--${name}`, String(value)]),
      ...(framed ? [] : ['--borderless']),
      ...(below ? [] : ['--topmost']),
    ];
    const errors = fs.openSync(this.errors, 'w');
    this.process = spawn(programs.pattern, words, { stdio: ['ignore', errors, errors] });
    fs.closeSync(errors);
    this.ended = new Promise((resolve) => {
      this.process.on('error', resolve);
      this.process.on('exit', resolve);
    });
    this.ended.then((how) => (this.end = how));
    this.commands = 0;
  }

  /** Its handle, places and state as it last told them. */
  get state() {
    return JSON.parse(fs.readFileSync(this.files.ready, 'utf8'));
  }

  get handle() {
    return this.state.handle;
  }

  get picture() {
    const { width, height } = this.state.client;
    return new Picture(width, height, this.palette);
  }

  get painted() {
    return painted(this.files.progress);
  }

  get progress() {
    return this.files.progress;
  }

  /** Waits until so many pictures have been painted since it started. */
  ready(pictures = 3) {
    return waitFor(`the window "${this.title}"`, () => {
      if (this.end !== undefined) {
        throw new Error(`pattern.exe ended: ${this.end} ${fs.readFileSync(this.errors, 'utf8')}`);
      }
      return fs.existsSync(this.files.ready) && fs.existsSync(this.progress) && this.painted >= pictures;
    });
  }

  paintedMore(count) {
    return paintedMore(this.progress, count);
  }

  /** Sends a command and waits until it has been carried out; the window's new state comes back. */
  async command(line) {
    fs.appendFileSync(this.files.control, `${line}\n`);
    this.commands += 1;
    await waitFor(`"${line}" carried out`, () => this.end !== undefined || this.state.commands >= this.commands);
    return this.state;
  }

  /** Closes the window; safe to call again. */
  async close() {
    if (this.end === undefined) {
      fs.appendFileSync(this.files.control, 'close\n');
      await waitFor(`the end of "${this.title}"`, () => this.end !== undefined);
    }
  }
}

/** Opens a pattern window for the time of a test. */
async function openPattern(t, options) {
  const window = new PatternWindow(options);
  t.after(() => window.close());
  await window.ready();
  return window;
}

module.exports = { foreignLibrary, nodeLibrary, openPattern, painted, paintedMore, programs };
