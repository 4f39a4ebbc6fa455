'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { openPattern } = require('./support/desktop');
const media = require('./support/media');
const { packageFolder } = require('./support/package');
const { runNode } = require('./support/scenario');
const { scratchFile, scratchFolder } = require('./support/scratch');

// Records, and ends in the middle of it in the way that `end` says.
const PROGRAM = `
  const [packageFolder, dir, handle, progress, end] = process.argv.slice(2);
  const { Brisolte } = require(packageFolder);
  const { paintedMore } = require(packageFolder + '/tests/js/support/desktop');
  const capture = new Brisolte();
  capture.setOutputDir(dir);
  capture.setWindow(Number(handle));
  if (capture.startRecord() !== true) {
    process.exit(9);
  }
  paintedMore(progress, 30).then(() => setImmediate(new Function(end)));
`;

for (const { name, end, code } of [
  { name: 'process.exit', end: 'process.exit(3)', code: 3 },
  { name: 'an exception that nobody catches', end: "throw new Error('uncaught')", code: 1 },
]) {
  test(`a process that ends by ${name} completes the file`, async (t) => {
    const window = await openPattern(t, { title: 'Ended', x: 20, y: 20, width: 320, height: 192 });
    const dir = scratchFolder();
    const program = scratchFile('js');
    fs.writeFileSync(program, PROGRAM);
    const words = [program, packageFolder, dir, String(window.handle), window.progress, end];
    const { exitCode, output, errors } = await runNode(words);
    assert.equal(exitCode, code, `${errors}\n${output}`);
    const [file] = fs.readdirSync(dir);
    media.assertWhole([path.join(dir, file)]);
  });
}
