// What the commands say when they are asked for something that there is not.

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { mkdirSync, symlinkSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { checkProgram, windowsNode } from '../../tools/workshop/windows-node.mjs';
import { isInTree, treeDir } from '../../tools/workshop/tree.mjs';
import { scratchFolder } from '../../tools/workshop/scratch.mjs';
import { outputOf } from '../../tools/workshop/processes.mjs';

/** Runs a command of the tree that must fail, and gives what it says. */
function complaint(words, env = {}) {
  const options = { cwd: treeDir, encoding: 'utf8', timeout: 60_000, env: { ...process.env, ...env } };
  const { status, stdout, stderr } = spawnSync(process.execPath, words, options);
  assert.equal(status, 1, stdout);
  assert.doesNotMatch(stderr, /^ {4}at /m, 'a stack is for those who mend the command');
  return stderr;
}

for (const name of ['build', 'demo', 'fuzz', 'hostile', 'package', 'recorder', 'remains', 'soak', 'test', 'tidy']) {
  test(`${name}: an unknown option is named in a sentence`, () => {
    assert.match(complaint([`tools/${name}.mjs`, '--unheard-of']), /--unheard-of/);
  });
}

test('build: an unknown preset is answered with those that there are', () => {
  assert.match(complaint(['tools/build.mjs', 'windoze']), /windoze; there are: windows, linux/);
});

test('test: a selection of nothing is a failure', () => {
  assert.match(complaint(['tools/test.mjs', 'workshop', '--only', 'of-this-name']), /no test .* has "of-this-name" in its name/);
});

test('a missing program of the host is named with its package', () => {
  const programs = join(scratchFolder('host'), 'bin');
  mkdirSync(programs);
  symlinkSync(outputOf(['sh', '-c', 'command -v sh']).trim(), join(programs, 'sh'));
  const said = complaint(['tools/in-root.mjs', 'true'], { PATH: programs });
  assert.match(said, /bwrap/);
  assert.match(said, /apt-get install .*bubblewrap/);
});

test('a cache that cannot be written is named in a sentence', () => {
  const said = complaint(['tools/in-root.mjs', 'true'], { BRISOLTE_CACHE: join(treeDir, 'LICENSE', 'cache') });
  assert.match(said, /The cache folder cannot be written: .*LICENSE.*BRISOLTE_CACHE/);
});

test('an empty BRISOLTE_CACHE is none, and a relative one is below the current folder', () => {
  const cacheDirFor = (value) => {
    const words = ['--input-type=module', '--eval', "import { cacheDir } from './tools/workshop/cache.mjs'; console.log(cacheDir)"];
    const env = { ...process.env, HOME: '/home/somebody', XDG_CACHE_HOME: '', BRISOLTE_CACHE: value };
    return outputOf([process.execPath, ...words], { cwd: treeDir, env }).trim();
  };
  assert.equal(cacheDirFor(''), '/home/somebody/.cache/brisolte');
  assert.equal(cacheDirFor('near'), join(treeDir, 'near'));
});

test('a folder beside the tree is not in it, however its name begins', () => {
  assert.deepEqual([treeDir, join(treeDir, 'src'), `${treeDir}-two`].map(isInTree), [true, true, false]);
});

test('a program other than the one of its hash is refused', async () => {
  assert.throws(() => checkProgram(join(treeDir, 'LICENSE'), '0'.repeat(64)), /LICENSE has the SHA-256 [0-9a-f]{64}, not 0{64}/);
  await assert.rejects(windowsNode('1.0.0'), /Node\.js 1\.0\.0 is none of/);
});
