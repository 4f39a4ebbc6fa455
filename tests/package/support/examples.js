'use strict';

// Scripts that record, run as a user runs them: in a folder of the user's own.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const media = require('../../js/support/media');
const { packageFolder } = require('../../js/support/package');
const { runNode } = require('../../js/support/scenario');
const { scratchFolder } = require('../../js/support/scratch');

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

function pngSize(file) {
  const head = fs.readFileSync(file).subarray(0, 24);
  assert.equal(head.toString('latin1', 1, 4), 'PNG');
  return [head.readUInt32BE(16), head.readUInt32BE(20)];
}

/** The programs that the README shows, each in a folder of a user's own with the package installed. */
function programsOfReadme() {
  const readme = fs.readFileSync(path.join(packageFolder, 'README.md'), 'utf8');
  const programs = [...readme.matchAll(/```js\n([^]*?)```/g)].map(([, code]) => code);
  assert.equal(programs.length, 2);
  return programs.map((code) => {
    const cwd = scratchFolder();
    fs.cpSync(packageFolder, path.join(cwd, 'node_modules', 'brisolte'), { recursive: true });
    // Without it Deno looks for nothing in node_modules.
    fs.writeFileSync(path.join(cwd, 'package.json'), '{ "private": true, "dependencies": { "brisolte": "*" } }\n');
    fs.writeFileSync(path.join(cwd, 'first.cjs'), code);
    return cwd;
  });
}

module.exports = { example, pngSize, programsOfReadme, recorded, run };
