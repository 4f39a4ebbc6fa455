// The licence texts of everything whose code is in the package's native files, from the sources they were built from.

import { cpSync, mkdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { buildRoot } from '../workshop/build-root.mjs';
import { ffmpegSources } from '../workshop/ffmpeg.mjs';
import { WorkshopError } from '../workshop/report.mjs';
import { treeDir } from '../workshop/tree.mjs';

const folder = join(treeDir, 'licenses');

const FROM_SOURCES = {
  'ffmpeg.md': 'ffmpeg/LICENSE.md',
  'ffmpeg-gpl-2.0.txt': 'ffmpeg/COPYING.GPLv2',
  'ffmpeg-lgpl-2.1.txt': 'ffmpeg/COPYING.LGPLv2.1',
  'lame.txt': 'lame/COPYING',
  'libvpx.txt': 'libvpx/LICENSE',
  'libvpx-patents.txt': 'libvpx/PATENTS',
  'x264.txt': 'x264/COPYING',
  'x265.txt': 'x265/COPYING',
};

// These come with the compiler, without a file of their licence: their headers begin with it.
const FROM_HEADERS = {
  'nv-codec-headers.txt': 'usr/include/ffnvcodec/nvEncodeAPI.h',
  'winpthreads.txt': 'usr/share/mingw-w64/include/pthread.h',
};

const FROM_PACKAGES = { 'node-addon-api.md': 'node-addon-api/LICENSE.md' };

/** Fills the folder `licenses` of the tree. */
export async function collectLicences() {
  const [sources, root] = [await ffmpegSources(), await buildRoot()];
  rmSync(folder, { recursive: true, force: true });
  mkdirSync(folder);
  const copyAll = (texts, from) =>
    Object.entries(texts).forEach(([name, path]) => cpSync(join(from, path), join(folder, name)));
  copyAll(FROM_SOURCES, sources);
  copyAll(FROM_PACKAGES, join(treeDir, 'node_modules'));
  for (const [name, path] of Object.entries(FROM_HEADERS)) {
    writeFileSync(join(folder, name), permissionIn(join(root, path)));
  }
}

function permissionIn(header) {
  const comments = readFileSync(header, 'utf8').match(/\/\*[^]*?\*\//g) ?? [];
  const found = comments.find((comment) => comment.includes('Permission is hereby granted'));
  if (!found) {
    throw new WorkshopError(`${header} does not tell its licence any more`);
  }
  const lines = found.slice(2, -2).split('\n');
  return `${lines.map((line) => line.replace(/^[ \t*]+/, '').trimEnd()).join('\n').trim()}\n`;
}
