'use strict';

const { spawn } = require('node:child_process');
const { once } = require('node:events');
const fs = require('node:fs');
const path = require('node:path');
const { waitFor } = require('../../js/support/wait');
const { folderOf } = require('./recorder');

/**
 * An application that records and then does this.
 * @param {string} body of a function with a parameter `recorder`
 * @param {object} [options] of the recorder, beside its file, and its `limits`
 * @param {object} [how] `program`, in place of this one, and the words `before` its script
 * @returns {Promise<object>} child; ended, its exit code and signal; file; output(); and recorder, the process that records
 */
async function hostOf(t, body, options = {}, { program = process.execPath, before = [] } = {}) {
  const folder = folderOf(t);
  const file = path.join(folder, 'talk.mp4');
  const told = path.join(folder, 'told');
  const words = [...before, path.join(__dirname, 'host.js'), JSON.stringify({ file, ...options }), told, body];
  const child = spawn(program, words, { stdio: ['ignore', 'pipe', 'pipe'] });
  let output = '';
  let errors = '';
  child.stdout.on('data', (text) => (output += text));
  child.stderr.on('data', (text) => (errors += text));
  const ended = once(child, 'close');
  await waitFor('the recording', () => {
    if (child.exitCode !== null) {
      throw new Error(`the application ended with ${child.exitCode}: ${errors}`);
    }
    return fs.existsSync(told);
  });
  return { child, ended, file, output: () => output, recorder: Number(fs.readFileSync(told, 'utf8')) };
}

module.exports = { hostOf };
