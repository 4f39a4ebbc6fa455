// What the workshop needs of the machine itself. Root installs what is missing, anyone else is told.

import { spawnSync } from 'node:child_process';
import { existsSync } from 'node:fs';
import { join } from 'node:path';
import { cacheDir, checkCacheDir } from './cache.mjs';
import { hasProgram, runLogged } from './processes.mjs';
import { step, WorkshopError } from './report.mjs';

/** Whether this process may do all on this machine. */
export const isRoot = process.getuid?.() === 0;

// Each thing with the Debian package that has it.
const PROGRAMS = {
  mmdebstrap: 'mmdebstrap',
  bwrap: 'bubblewrap',
  ...{ flock: 'util-linux', setpriv: 'util-linux', unshare: 'util-linux' },
  ...{ npm: 'npm', tar: 'tar', gzip: 'gzip', bash: 'bash' },
  // Gives an ordinary user the other users that files of a Debian belong to.
  ...(isRoot ? {} : { newuidmap: 'uidmap' }),
};
const FILES = { '/usr/share/keyrings/debian-archive-keyring.gpg': 'debian-archive-keyring' };

let checked;

/** Makes sure, once a run, that the machine has what the workshop needs. @throws {WorkshopError} that says what it lacks */
export const checkHost = () => (checked ??= check());

async function check() {
  if (process.platform !== 'linux' || process.arch !== 'x64') {
    throw new WorkshopError(`The workshop runs on Linux x86-64; this is ${process.platform} ${process.arch}.`);
  }
  await install([
    ...Object.entries(PROGRAMS).filter(([program]) => !hasProgram(program)),
    ...Object.entries(FILES).filter(([file]) => !existsSync(file)),
  ]);
  const { status, stderr } = spawnSync('bwrap', ['--ro-bind', '/', '/', '--unshare-pid', '--unshare-net', '--proc', '/proc', 'true']);
  if (status !== 0) {
    throw new WorkshopError(
      `bubblewrap cannot isolate programs here: ${String(stderr).trim()}\n` +
        'A container has to be started with --privileged. On Ubuntu, who is not root needs: sysctl kernel.apparmor_restrict_unprivileged_userns=0',
    );
  }
}

async function install(missing) {
  if (missing.length === 0) {
    return;
  }
  const packages = [...new Set(missing.map(([, name]) => name))];
  if (!isRoot || !hasProgram('apt-get')) {
    const things = missing.map(([thing]) => thing).join(', ');
    throw new WorkshopError(`Missing here: ${things}. On Debian this installs them: apt-get install ${packages.join(' ')}`);
  }
  checkCacheDir();
  await step(`Host packages: ${packages.join(' ')}`, async (note) => {
    const env = { ...process.env, DEBIAN_FRONTEND: 'noninteractive' };
    const options = { log: join(cacheDir, 'host-packages.log'), note, env };
    const apt = ['apt-get', '-o', 'DPkg::Lock::Timeout=300', '-y', '-q'];
    await runLogged([...apt, 'update'], options);
    await runLogged([...apt, 'install', '--no-install-recommends', ...packages], options);
  });
}
