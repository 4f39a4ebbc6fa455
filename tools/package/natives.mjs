// The package's native files: which they are, what they are for, and what they need of the system.

import { basename, dirname, join } from 'node:path';
import { buildRoot } from '../workshop/build-root.mjs';
import { outputOf } from '../workshop/processes.mjs';
import { sandboxed } from '../workshop/sandbox.mjs';
import { WorkshopError } from '../workshop/report.mjs';

const FOLDER = 'prebuilds/win32-x64';

const ENCODERS = {
  gpl: '6 MB of x265, 2 of x264, 2 of libvpx (VP8, VP9), the rest FFmpeg’s own, LAME (MP3), Opus and the way to Intel’s',
  lgpl: '2 MB of libvpx (VP8, VP9), the rest OpenH264, FFmpeg’s own, LAME (MP3), Opus and the way to Intel’s',
};

const PURPOSES = [
  [/^brisolte\.node$/, 'the module: capture, sound, Media Foundation, and the C++ runtime'],
  [/^recorder\.node$/, 'the same for the processes of recorders'],
  [/^avcodec-brisolte-\d+\.dll$/, 'encoders'],
  [/^avformat-brisolte-\d+\.dll$/, 'MP4, MOV, WebM, AVI and MP3 files'],
  [/^avutil-brisolte-\d+\.dll$/, 'what the other FFmpeg libraries share'],
  [/^swresample-brisolte-\d+\.dll$/, 'conversion of sound to the encoder’s format'],
  [/^swscale-brisolte-\d+\.dll$/, 'conversion of pictures for encoders that do not take NV12'],
];

// What the files need of Windows, and every edition has; Media Foundation, for one, is not in those for Europe ("N").
const SYSTEM = /^(advapi32|avrt|bcrypt|d3d11|dwmapi|kernel32|ole32|user32|winmm|api-ms-win-(core-winrt|crt)-[a-z0-9-]+)\.dll$/i;

/** Whether a DLL of this name is in every Windows. */
export const isOfWindows = (name) => SYSTEM.test(name);

/** What a file of the package with FFmpeg under this licence is for, if it is a native one. */
export function purposeOf(path, licence = 'gpl') {
  const purpose = PURPOSES.find(([name]) => name.test(basename(path)))?.[1];
  return purpose === 'encoders' ? `encoders: ${ENCODERS[licence]}` : purpose;
}

const isNative = (path) => /\.(node|dll|exe|so|dylib|a|lib|pdb)(\.|$)/i.test(path);

/** @throws {WorkshopError} when the listed files of a folder are not exactly the native files that a user needs */
export async function checkNatives(paths, folder) {
  const natives = paths.filter(isNative);
  const strange = natives.filter((path) => !path.startsWith(`${FOLDER}/`) || !purposeOf(path));
  const missing = PURPOSES.filter(([name]) => natives.filter((path) => name.test(basename(path))).length !== 1);
  if (strange.length > 0 || missing.length > 0) {
    const names = missing.map(([name]) => name.source);
    throw new WorkshopError(`the package has ${strange.join(', ') || 'nothing'} too much and lacks ${names.join(', ') || 'nothing'}`);
  }
  const root = await buildRoot();
  const here = new Set(natives.map((path) => basename(path).toLowerCase()));
  for (const path of natives) {
    const unknown = importsOf(root, join(folder, path)).filter((name) => !isOfWindows(name) && !here.has(name.toLowerCase()));
    if (unknown.length > 0) {
      throw new WorkshopError(`${path} needs ${unknown.join(', ')}, which neither the package nor every Windows has`);
    }
  }
}

function importsOf(root, file) {
  const dump = outputOf(sandboxed(root, ['x86_64-w64-mingw32ucrt-objdump', '-p', file], { readable: [dirname(file)] }));
  return [...dump.matchAll(/DLL Name: (\S+)/g)].map(([, name]) => name);
}
