'use strict';

// Scripts that record, run as a user runs them: in a folder of the user's own.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const media = require('../../js/support/media');
const { packageFolder } = require('../../js/support/package');
const { runNode } = require('../../js/support/scenario');
const { scratchFile, scratchFolder } = require('../../js/support/scratch');

/** The path of an example of the package. */
const example = (name) => path.join(packageFolder, 'examples', name);

/** Runs a script in a folder of its own; gives { output, errors, cwd, recordings }. */
async function run(words, { exitCode: wanted = 0, cwd = scratchFolder(), ...options } = {}) {
  const { exitCode, output, errors } = await runNode(words, { cwd, ...options });
  assert.equal(exitCode, wanted, `${output}\n${errors}`);
  const recordings = fs.readdirSync(cwd).filter((name) => name.startsWith('Qorvex-'));
  return { output, errors, cwd, recordings: recordings.map((name) => path.join(cwd, name)) };
}

/** The streams of the one recording of a run, which its output names last. */
function recorded({ output, recordings }) {
  assert.equal(recordings.length, 1, output);
  const [file] = recordings;
  assert.ok(output.trimEnd().endsWith(file), output);
  const { streams, video, packets, format } = media.describe(file);
  return { kinds: streams.map((stream) => stream.codec_type), video, frames: packets.length, seconds: Number(format.duration) };
}

/**
 * Words before a script's, with which it is interrupted once it has recorded some pictures. Nobody can press Ctrl+C in a test:
 * a console that two programs share would end both.
 */
function interruption() {
  const script = scratchFile('js');
  fs.writeFileSync(
    script,
    `const fs = require('node:fs');
    const hasSome = (name) => name.endsWith('.mp4') && fs.statSync(name).size > 2000;
    const look = setInterval(() => {
      if (fs.readdirSync('.').some(hasSome)) {
        clearInterval(look);
        process.emit('SIGINT');
      }
    }, 100);
    look.unref();`,
  );
  return ['--require', script];
}

function pngSize(file) {
  const head = fs.readFileSync(file).subarray(0, 24);
  assert.equal(head.toString('latin1', 1, 4), 'PNG');
  return [head.readUInt32BE(16), head.readUInt32BE(20)];
}

module.exports = { example, interruption, pngSize, recorded, run };
