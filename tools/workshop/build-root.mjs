// The Debian 13 system in which everything is built and run.

import { readFileSync } from 'node:fs';
import { cached } from './cache.mjs';
import { checkHost, isRoot } from './host.mjs';
import { runLogged } from './processes.mjs';

const SUITE = 'trixie';
const PACKAGES = readFileSync(new URL('recipes/build-root.packages', import.meta.url), 'utf8')
  .split('\n')
  .filter((line) => line && !line.startsWith('#'));

/** The folder of the build root; made when it is missing. */
export async function buildRoot() {
  await checkHost();
  return cached('build-root', 'Build root: Debian 13 with Wine and the compilers', { SUITE, PACKAGES }, makeRoot);
}

/** The installed versions of some packages of the build root: what a thing built there depends on. */
export function packageVersions(root, names) {
  const status = readFileSync(`${root}/var/lib/dpkg/status`, 'utf8').split('\n\n');
  return names.map((name) => {
    const entry = status.find((text) => text.startsWith(`Package: ${name}\n`));
    return `${name} ${entry?.match(/^Version: (.*)$/m)[1]}`;
  });
}

async function makeRoot(folder, note, log) {
  const noDocs = ['man', 'doc', 'info', 'locale'].map((dir) => `--dpkgopt=path-exclude=/usr/share/${dir}/*`);
  const mmdebstrap = ['mmdebstrap', '--variant=apt', ...noDocs, `--include=${PACKAGES.join(',')}`];
  await runLogged(isRoot ? asRoot([...mmdebstrap, SUITE, folder]) : asUser([...mmdebstrap, '--mode=unshare', SUITE, '-'], folder), {
    log,
    note,
  });
}

// As root it would outlive an interrupted run, go on writing and leave its mounts: its own tree of processes and its own
// view of the mounts end with this process.
const asRoot = (command) => [
  ...['setpriv', '--pdeathsig', 'KILL', 'unshare', '--mount', '--pid', '--fork', '--kill-child'],
  ...command,
];

// Of its own accord it would make a folder that belongs to users who exist in its namespace only, and which the caller
// could neither remove nor, in a home of his own, let them enter. Unpacked here, all of it belongs to the caller.
const asUser = (command, folder) => [
  ...['setpriv', '--pdeathsig', 'KILL', 'bash', '-o', 'pipefail', '-c'],
  'setpriv --pdeathsig TERM "${@:2}" | setpriv --pdeathsig KILL tar -x -C "$1" --no-same-owner --exclude="./dev/*"',
  ...['build-root', folder, ...command],
];
