// The licence texts of everything whose code is in the package's native files, from the sources they were built from.

import { cpSync, mkdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { buildRoot } from '../workshop/build-root.mjs';
import { codecsUnder, patchedSource } from '../workshop/ffmpeg.mjs';
import { WorkshopError } from '../workshop/report.mjs';
import { treeDir } from '../workshop/tree.mjs';
import { sourcesPage } from './sources-page.mjs';

const OF_FFMPEG = {
  gpl: { 'ffmpeg.md': 'LICENSE.md', 'ffmpeg-gpl-2.0.txt': 'COPYING.GPLv2', 'ffmpeg-lgpl-2.1.txt': 'COPYING.LGPLv2.1' },
  lgpl: { 'ffmpeg.md': 'LICENSE.md', 'ffmpeg-lgpl-2.1.txt': 'COPYING.LGPLv2.1' },
};

const OF_CODECS = {
  lame: { 'lame.txt': 'COPYING' },
  libvpx: { 'libvpx.txt': 'LICENSE', 'libvpx-patents.txt': 'PATENTS' },
  onevpl: { 'onevpl.txt': 'LICENSE' },
  openh264: { 'openh264.txt': 'LICENSE' },
  opus: { 'opus.txt': 'COPYING' },
  x264: { 'x264.txt': 'COPYING' },
  x265: { 'x265.txt': 'COPYING' },
};

// These come with the compiler, without a file of their licence: their headers begin with it.
const FROM_HEADERS = {
  'nv-codec-headers.txt': 'usr/include/ffnvcodec/nvEncodeAPI.h',
  'winpthreads.txt': 'usr/share/mingw-w64/include/pthread.h',
};

// The Debian package that has these notices is part of the build root, which keeps no documentation.
const FROM_HERE = { 'mingw-w64-runtime.txt': 'mingw-w64-runtime.txt' };

const FROM_PACKAGES = { 'node-addon-api.md': 'node-addon-api/LICENSE.md' };

/** Fills a folder with the texts for the package with FFmpeg under this licence. */
export async function collectLicences(folder, licence) {
  const root = await buildRoot();
  rmSync(folder, { recursive: true, force: true });
  mkdirSync(folder);
  const copyAll = (texts, from) =>
    Object.entries(texts).forEach(([name, path]) => cpSync(join(from, path), join(folder, name)));
  copyAll(OF_FFMPEG[licence], await patchedSource('ffmpeg'));
  for (const name of codecsUnder[licence]) {
    copyAll(OF_CODECS[name], await patchedSource(name));
  }
  copyAll(FROM_PACKAGES, join(treeDir, 'node_modules'));
  copyAll(FROM_HERE, join(treeDir, 'tools', 'package'));
  for (const [name, path] of Object.entries(FROM_HEADERS)) {
    writeFileSync(join(folder, name), noticesIn(join(root, path)));
  }
  writeFileSync(join(folder, 'SOURCES.md'), await sourcesPage(licence));
}

/** The comments with which a header begins: the notices of all who wrote it. */
function noticesIn(header) {
  const [beginning] = readFileSync(header, 'utf8').split(/^#/m);
  const comments = beginning.match(/\/\*[^]*?\*\//g) ?? [];
  if (!comments.some((comment) => comment.includes('Permission is hereby granted'))) {
    throw new WorkshopError(`${header} does not tell its licence any more`);
  }
  const texts = comments.map((comment) => comment.slice(2, -2).split('\n').map((line) => line.replace(/^[ \t*]+/, '').trimEnd()));
  return `${texts.map((lines) => lines.join('\n').trim()).join('\n\n')}\n`;
}
