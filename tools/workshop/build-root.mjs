// The Debian 13 system in which everything is built and run, and the two host programs that make and enter it.

import { readFileSync } from 'node:fs';
import { cached } from './cache.mjs';
import { hasProgram, runLogged } from './processes.mjs';
import { step, WorkshopError } from './report.mjs';

const SUITE = 'trixie';
const PACKAGES = readFileSync(new URL('recipes/build-root.packages', import.meta.url), 'utf8')
  .split('\n')
  .filter((line) => line && !line.startsWith('#'));
const HOST_PROGRAMS = { mmdebstrap: 'mmdebstrap', bwrap: 'bubblewrap', flock: 'util-linux' };

/** The folder of the build root; made when it is missing. */
export async function buildRoot() {
  await hostPrograms();
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
  // Without a mode mmdebstrap chooses by who calls it: root unpacks directly, anyone else through a user namespace.
  // As root it would outlive an interrupted run and go on writing; its own process tree ends with this process.
  const endsWithUs =
    process.getuid() === 0
      ? ['setpriv', '--pdeathsig', 'KILL', 'unshare', '--pid', '--fork', '--kill-child']
      : [];
  const noDocs = ['man', 'doc', 'info', 'locale'].map((dir) => `--dpkgopt=path-exclude=/usr/share/${dir}/*`);
  await runLogged(
    [...endsWithUs, 'mmdebstrap', '--variant=apt', ...noDocs, `--include=${PACKAGES.join(',')}`, SUITE, folder],
    { log, note },
  );
}

async function hostPrograms() {
  const missing = Object.keys(HOST_PROGRAMS).filter((program) => !hasProgram(program));
  if (missing.length === 0) {
    return;
  }
  const packages = missing.map((program) => HOST_PROGRAMS[program]);
  if (process.getuid() !== 0 || !hasProgram('apt-get')) {
    throw new WorkshopError(
      `${missing.join(' and ')} missing. Install them, on Debian with: apt-get install ${packages.join(' ')}`,
    );
  }
  await step(`Host packages: ${packages.join(' ')}`, async (note) => {
    const env = { ...process.env, DEBIAN_FRONTEND: 'noninteractive' };
    const options = { log: '/tmp/brisolte-host-packages.log', note, env };
    const apt = ['apt-get', '-o', 'DPkg::Lock::Timeout=300', '-y', '-q'];
    await runLogged([...apt, 'update'], options);
    await runLogged([...apt, 'install', '--no-install-recommends', ...packages], options);
  });
}
