// What a command leaves behind that is ended before its time: nothing.

import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { readdirSync, readFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import support from '../js/support/wait.js';
import { scratchFolder } from '../../tools/workshop/scratch.mjs';
import { treeDir } from '../../tools/workshop/tree.mjs';

/** The command lines of all processes that name this text. */
function processesWith(text) {
  const lines = readdirSync('/proc').filter((name) => /^\d+$/.test(name)).map((id) => {
    try {
      return readFileSync(join('/proc', id, 'cmdline'), 'utf8').replaceAll('\0', ' ');
    } catch {
      return '';
    }
  });
  return lines.filter((line) => line.includes(text));
}

for (const signal of ['SIGINT', 'SIGTERM', 'SIGHUP']) {
  test(`${signal} in the middle of a Windows program leaves neither a file nor a process`, async () => {
    const tmp = scratchFolder('tmp');
    const words = ['tools/wine/run.mjs', 'node', '--eval', "console.log('it runs'); setInterval(() => {}, 1000)"];
    const env = { ...process.env, TMPDIR: tmp };
    const command = spawn(process.execPath, words, { cwd: treeDir, env, stdio: ['ignore', 'pipe', 'inherit'] });
    const ended = new Promise((resolve) => command.on('close', resolve));
    const begun = new Promise((resolve) => command.stdout.on('data', (chunk) => String(chunk).includes('it runs') && resolve()));
    await Promise.race([begun, ended]);
    assert.notDeepEqual(processesWith(tmp), []);
    command.kill(signal);
    assert.equal(await ended, { SIGHUP: 129, SIGINT: 130, SIGTERM: 143 }[signal]);
    assert.deepEqual(readdirSync(tmp), []);
    await support.waitFor('the end of all its processes', () => processesWith(tmp).length === 0, 5000);
  });
}
