// What the package's libraries are built from: that Debian's patches are in it, and what they need.

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { cpSync, mkdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { isOfWindows } from '../../tools/package/natives.mjs';
import { patchesOf } from '../../tools/package/sources-page.mjs';
import { buildRoot } from '../../tools/workshop/build-root.mjs';
import { ffmpegLibraries, identityOf, patchedSource, sourceList } from '../../tools/workshop/ffmpeg.mjs';
import { sandboxed } from '../../tools/workshop/sandbox.mjs';
import { scratchFolder } from '../../tools/workshop/scratch.mjs';

const withPatches = sourceList.filter(({ file }) => file.includes('.debian.tar')).map(({ name }) => name);

test('what is built is a security update of Debian only with its patches', () => {
  const updates = sourceList.filter(({ version }) => version.includes('+deb')).map(({ name }) => name);
  assert.deepEqual(updates.filter((name) => !withPatches.includes(name)), []);
});

for (const name of withPatches) {
  test(`${name}: every patch of the series is applied`, async () => {
    const [root, patched] = [await buildRoot(), await patchedSource(name)];
    const patches = patchesOf(patched);
    const source = join(scratchFolder('source'), name);
    if (patches.length > 0) {
      cpSync(patched, source, { recursive: true });
    }
    // Only what has been applied can be taken back, the last one first.
    for (const patch of patches.reverse()) {
      const words = ['patch', '-d', source, '-p1', '-R', '--batch', '--fuzz=0', '-i', join(source, 'debian', 'patches', patch)];
      const [program, ...rest] = sandboxed(root, words, { writable: [source] });
      const { status, stdout } = spawnSync(program, rest, { encoding: 'utf8' });
      assert.ok(status === 0 && !/Unreversed|FAILED/.test(stdout), `${patch}: ${stdout}`);
    }
  });
}

test("AMD's headers have to be where AMF_ROOT says that they are", async (t) => {
  process.env.AMF_ROOT = scratchFolder('headers');
  t.after(() => delete process.env.AMF_ROOT);
  await assert.rejects(ffmpegLibraries(), /AMF_ROOT is .*, where there is no AMF\/core\/Version\.h/);
});

test("AMD's headers count by what is in them, not by where they are", () => {
  const folderWith = (text) => {
    const folder = scratchFolder('headers');
    mkdirSync(join(folder, 'core'));
    writeFileSync(join(folder, 'core', 'Version.h'), text);
    return folder;
  };
  const first = identityOf(folderWith('1.4.34'));
  assert.equal(identityOf(folderWith('1.4.34')), first);
  assert.notEqual(identityOf(folderWith('1.4.35')), first);
});

test('of Windows the libraries may need only what every edition has, and of its C runtimes the Universal one', () => {
  const ours = ['KERNEL32.dll', 'api-ms-win-core-winrt-l1-1-0.dll', 'api-ms-win-crt-stdio-l1-1-0.dll'];
  const others = ['mf.dll', 'mfplat.dll', 'mfreadwrite.dll', 'libwinpthread-1.dll', 'msvcrt.dll', 'ucrtbased.dll'];
  assert.deepEqual([...ours, ...others].filter(isOfWindows), ours);
});
