// The sources that talk to FFmpeg, held against the headers of another FFmpeg than the one they are built with.

import { spawnSync } from 'node:child_process';
import { readdirSync, readFileSync } from 'node:fs';
import { join } from 'node:path';
import { buildRoot } from './build-root.mjs';
import { ffmpegHeaders } from './ffmpeg.mjs';
import { sandboxed } from './sandbox.mjs';
import { treeDir } from './tree.mjs';

const FLAGS = ['-std=c++20', '-Wall', '-Wextra', '-Wpedantic', '-Werror', '-fsyntax-only'];

/** The portable sources of the module that include a header of FFmpeg, or one of ours that does. */
function sourcesWithFFmpeg() {
  const files = readdirSync(join(treeDir, 'src'), { recursive: true }).filter((name) => /\.(cpp|h)$/.test(name));
  const textOf = new Map(files.map((name) => [name, readFileSync(join(treeDir, 'src', name), 'utf8')]));
  const included = (name) => [...textOf.get(name).matchAll(/#include "(.*)"/g)].map(([, header]) => header);
  const thatReach = (pattern) => {
    const reaching = new Set(files.filter((name) => pattern.test(textOf.get(name))));
    for (let before = -1; before < reaching.size; ) {
      before = reaching.size;
      files.filter((name) => included(name).some((header) => reaching.has(header))).forEach((name) => reaching.add(name));
    }
    return reaching;
  };
  const ofWindows = thatReach(/^#include <(windows|objbase|unknwn|combaseapi|wrl|d3d11|mf)/m);
  return [...thatReach(/^#include <lib(av|sw)/m)].filter((name) => name.endsWith('.cpp') && !ofWindows.has(name)).sort();
}

/**
 * Compiles those sources, warnings as errors, without making anything of them.
 * @param {string} series of Debian
 * @param {string} [until] see `ffmpegHeaders`
 * @returns {Promise<{version: string, sources: string[], failures: {file: string, output: string}[]}>} `version` as Debian has it
 */
export async function checkAgainst(series, until) {
  const [root, headers] = [await buildRoot(), await ffmpegHeaders(series, until)];
  const [, version] = readFileSync(join(headers, 'packages'), 'utf8').match(/_(?:\d+%3a)?([^_]+)_/);
  const sources = sourcesWithFFmpeg();
  const failures = sources.flatMap((name) => {
    const file = join('src', name);
    const command = ['g++', ...FLAGS, '-Isrc', '-isystem', headers, file];
    const [program, ...words] = sandboxed(root, command, { readable: [treeDir, headers], cwd: treeDir });
    const { status, stderr } = spawnSync(program, words, { encoding: 'utf8' });
    return status === 0 ? [] : [{ file, output: stderr }];
  });
  return { version, sources, failures };
}
