// The Wine prefix that every run starts from. A run gets a prefix of its own, made from this one; see wine/session.sh.

import { readFileSync } from 'node:fs';
import { basename, dirname } from 'node:path';
import { fileURLToPath } from 'node:url';
import { buildRoot } from './build-root.mjs';
import { cached } from './cache.mjs';
import { runLogged } from './processes.mjs';
import { sandboxed } from './sandbox.mjs';

const script = fileURLToPath(new URL('recipes/wine-prefix.sh', import.meta.url));

/** The folder of the prefix to start from. */
export async function winePrefix() {
  const root = await buildRoot();
  const inputs = { root: basename(root), script: readFileSync(script, 'utf8') };
  return cached('wine-prefix', 'Wine prefix', inputs, (folder, note, log) =>
    runLogged(sandboxed(root, [script, folder], { writable: [folder], readable: [dirname(script)] }), { log, note }),
  );
}
