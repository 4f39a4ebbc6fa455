import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import { existsSync, readdirSync, readFileSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { test } from 'node:test';
import support from '../js/support/package.js';

const { BRISOLTE_PACKAGE: folder, BRISOLTE_TARBALL: tarball } = process.env;
const project = dirname(dirname(folder));

const packed = execFileSync('tar', ['-tzf', tarball], { encoding: 'utf8' })
  .trim()
  .split('\n')
  .map((path) => path.replace(/^package\//, ''));

test('the native files are the module and the libraries it needs', () => {
  const natives = packed.filter((path) => /\.(node|dll|exe|so|dylib|lib|a|pdb)$/.test(path)).map((path) => path.replace(/-\d+/, ''));
  const libraries = ['avcodec', 'avformat', 'avutil', 'swresample', 'swscale'].map((name) => `${name}.dll`);
  assert.deepEqual(natives.sort(), [...libraries, 'brisolte.node'].map((name) => `prebuilds/win32-x64/${name}`).sort());
});

test('it has the licences of all that is in the native files', () => {
  const names = ['ffmpeg-gpl-2.0.txt', 'lame.txt', 'libvpx.txt', 'x264.txt', 'x265.txt', 'winpthreads.txt'];
  for (const name of names) {
    assert.match(readFileSync(join(folder, 'licenses', name), 'utf8'), /copyright/i, name);
  }
  assert.match(readFileSync(join(folder, 'LICENSE'), 'utf8'), /Permission is hereby granted/);
});

test('it has the types, the documentation and the examples, and nothing of the workshop', () => {
  for (const path of ['index.d.ts', 'index.d.mts', 'README.md', 'docs/api.md', 'docs/recorder.md', 'recorder.d.ts']) {
    assert.ok(packed.includes(path), path);
  }
  assert.deepEqual(
    packed.filter((path) => /^(src|tests|tools|build|cmake|node_modules)\//.test(path)),
    [],
  );
});

test('the reference has every method, in the order of the class', () => {
  const [, ofTheClass] = readFileSync(join(folder, 'docs', 'api.md'), 'utf8').split(/^## /m);
  const named = [...ofTheClass.matchAll(/^### (.*)$/gm)].map(([, name]) => name);
  assert.deepEqual(named, ['new Brisolte()', ...support.METHODS]);
});

test('every link of its pages leads somewhere', () => {
  const pages = ['README.md', ...readdirSync(join(folder, 'docs')).map((name) => `docs/${name}`)];
  const links = pages.flatMap((page) => {
    const targets = [...readFileSync(join(folder, page), 'utf8').matchAll(/\]\(([^)#\s]+)/g)].map(([, target]) => target);
    return targets.filter((target) => !/^https?:/.test(target)).map((target) => ({ page, target }));
  });
  assert.ok(links.length > 0);
  // What is for those who work on the package is in its repository only.
  const inRepository = /^(\.\.\/)?CONTRIBUTING\.md$/;
  const broken = links.filter(
    ({ page, target }) => !inRepository.test(target) && !existsSync(join(folder, dirname(page), target)),
  );
  assert.deepEqual(broken, []);
});

test('it is small enough to be fetched', () => {
  const size = readFileSync(tarball).length;
  assert.ok(size < 9e6, `${size} bytes`);
});

test('it runs no script when it is installed', () => {
  const { scripts } = JSON.parse(readFileSync(join(folder, 'package.json'), 'utf8'));
  const onInstall = ['preinstall', 'install', 'postinstall', 'prepare'].filter((name) => name in scripts);
  assert.deepEqual(onInstall, []);
  assert.ok(!existsSync(join(folder, 'binding.gyp')), 'npm would compile');
});

test('npx brisolte is its command line', () => {
  const { status, stdout } = spawnSync('npx', ['--no-install', 'brisolte', '--help'], { cwd: project, encoding: 'utf8' });
  assert.equal(status, 0);
  assert.match(stdout, /^usage: brisolte list/);
});

test('elsewhere than on Windows x64 it says so when it is loaded', () => {
  const loads = [
    ['--eval', "require('brisolte')"],
    ['--input-type=module', '--eval', "await import('brisolte')"],
  ];
  for (const words of loads) {
    const { status, stderr } = spawnSync(process.execPath, words, { cwd: project, encoding: 'utf8' });
    assert.equal(status, 1);
    assert.match(stderr, new RegExp(`Error: brisolte records on Windows x64; this is ${process.platform} ${process.arch}`));
  }
});
