import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import { existsSync, readdirSync, readFileSync } from 'node:fs';
import { delimiter, dirname, join } from 'node:path';
import { test } from 'node:test';
import { NtExecutable, NtExecutableResource, Resource } from 'resedit';
import { buildRoot } from '../../tools/workshop/build-root.mjs';
import { outputOf } from '../../tools/workshop/processes.mjs';
import { sandboxed } from '../../tools/workshop/sandbox.mjs';
import support from '../js/support/package.js';

const { BRISOLTE_PACKAGE: folder, BRISOLTE_TARBALL: tarball, BRISOLTE_SYMBOLS: symbols } = process.env;
const MODULES = ['brisolte.node', 'recorder.node'];
const project = dirname(dirname(folder));

const packed = execFileSync('tar', ['-tzf', tarball], { encoding: 'utf8' })
  .trim()
  .split('\n')
  .map((path) => path.replace(/^package\//, ''));

test('the native files are the two modules and the libraries they need', () => {
  const natives = packed.filter((path) => /\.(node|dll|exe|so|dylib|lib|a|pdb)$/.test(path)).map((path) => path.replace(/-\d+/, ''));
  const libraries = ['avcodec', 'avformat', 'avutil', 'swresample', 'swscale'].map((name) => `${name}-brisolte.dll`);
  assert.deepEqual(natives.sort(), [...libraries, ...MODULES].map((name) => `prebuilds/win32-x64/${name}`).sort());
});

test('it has the licences of all that is in the native files', () => {
  const sentences = {
    'ffmpeg-gpl-2.0.txt': /GNU GENERAL PUBLIC LICENSE\s+Version 2, June 1991/,
    'ffmpeg-lgpl-2.1.txt': /GNU LESSER GENERAL PUBLIC LICENSE\s+Version 2\.1/,
    'ffmpeg.md': /the GNU General Public License\s+version 2 or later/i,
    'lame.txt': /GNU LIBRARY GENERAL PUBLIC LICENSE/,
    'libvpx.txt': /Copyright \(c\) 2010, The WebM Project authors/,
    'libvpx-patents.txt': /Additional IP Rights Grant \(Patents\)/,
    'onevpl.txt': /Copyright \(c\) \d+ Intel Corporation\s+Permission is hereby granted/,
    'opus.txt': /Copyright 2001-2023 Xiph\.Org[^]*Redistribution and use in source and binary forms/,
    'mingw-w64-runtime.txt': /the mingw-w64 project[^]*Redistributions in binary form must reproduce[^]*gdtoa[^]*Lucent/,
    'node-addon-api.md': /Permission is hereby granted/,
    'nv-codec-headers.txt': /NVIDIA Corporation\s+Permission is hereby granted/,
    'winpthreads.txt': /mingw-w64 project\s+Permission is hereby granted[^]*Lockless Inc\.[^]*Redistributions in binary form must reproduce/,
    'x264.txt': /GNU GENERAL PUBLIC LICENSE\s+Version 2/,
    'x265.txt': /GNU GENERAL PUBLIC LICENSE\s+Version 2/,
  };
  for (const [name, sentence] of Object.entries(sentences)) {
    assert.match(readFileSync(join(folder, 'licenses', name), 'utf8'), sentence, name);
  }
  assert.match(readFileSync(join(folder, 'LICENSE'), 'utf8'), /Permission is hereby granted/);
});

test('it says from which sources its libraries are built', () => {
  const page = readFileSync(join(folder, 'licenses', 'SOURCES.md'), 'utf8');
  for (const name of ['ffmpeg', 'lame', 'libvpx', 'onevpl', 'opus', 'x264', 'x265']) {
    assert.match(page, new RegExp(`^## ${name} \\S+\n\n- \`${name}_\\S+\\.orig\\.tar\\.\\w+\`, SHA-256 \`[0-9a-f]{64}\`$`, 'm'));
  }
  assert.match(page, /^- CVE-2026-2447\.patch$/m);
  assert.match(page, /`tools\/workshop\/recipes` as of commit [0-9a-f]{40}/);
});

test('it has no path of the machine that built it', () => {
  for (const name of readdirSync(join(folder, 'prebuilds', 'win32-x64'))) {
    const texts = readFileSync(join(folder, 'prebuilds', 'win32-x64', name), 'latin1').split('\0');
    // FFmpeg has the pattern of a temporary file's name in it, which it never makes on Windows.
    const paths = texts.filter((text) => /\/root\/|\/home\/|\/tmp\/|\.cache\//.test(text) && text !== '/tmp/%sXXXXXX');
    assert.deepEqual(paths, [], name);
  }
});

/** What Windows shows of a native file. */
function versionOf(name) {
  const file = NtExecutable.from(readFileSync(join(folder, 'prebuilds', 'win32-x64', name)));
  const [info] = Resource.VersionInfo.fromEntries(NtExecutableResource.from(file).entries);
  const [language] = info.getAllLanguagesForStringValues();
  return info.getStringValues(language);
}

test('Windows shows the names and versions of the native files', () => {
  const { version } = JSON.parse(readFileSync(join(folder, 'package.json'), 'utf8'));
  for (const name of MODULES) {
    const { ProductName, ProductVersion, LegalCopyright, OriginalFilename } = versionOf(name);
    assert.deepEqual([ProductName, ProductVersion, LegalCopyright, OriginalFilename], ['Brisolte', version, 'MIT', name]);
  }
  for (const name of readdirSync(join(folder, 'prebuilds', 'win32-x64')).filter((each) => each.endsWith('.dll'))) {
    const library = versionOf(name);
    assert.equal(library.ProductName, 'FFmpeg', name);
    assert.match(library.ProductVersion, /^7\.1/, name);
  }
});

const ENTRIES = { 'brisolte.node': /src\/binding\/module\.cpp:\d+/, 'recorder.node': /src\/binding\/recorder_module\.cpp:\d+/ };

for (const name of MODULES) {
  test(`the symbols beside the package tell the function and the line of an address in ${name}`, () => assertSymbols(name));
}

async function assertSymbols(module) {
  const root = await buildRoot();
  const file = symbols.split(delimiter).find((path) => path.endsWith(`-${module}.debug`));
  const tool = (name, ...words) =>
    outputOf(sandboxed(root, [`x86_64-w64-mingw32ucrt-${name}`, ...words], { readable: [folder, dirname(file)] }));
  const exported = tool('objdump', '-p', join(folder, 'prebuilds', 'win32-x64', module));
  const [, base] = exported.match(/ImageBase\s+([0-9a-f]+)/);
  const [, offset] = exported.match(/\[ *\d+\] \+base\[ *\d+\] ([0-9a-f]+) Export RVA\n/) ?? exported.match(/([0-9a-f]+) Export RVA/);
  const address = (BigInt(`0x${base}`) + BigInt(`0x${offset}`)).toString(16);
  const told = tool('addr2line', '-f', '-C', '-e', file, `0x${address}`);
  assert.match(told, /napi_register_module_v1|node_api_module_get_api_version_v1/);
  assert.match(told, ENTRIES[module]);
}

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
