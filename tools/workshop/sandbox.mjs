// The build root seen as a system of its own: commands run in it, on the caller's files, and leave neither a mount
// nor a process behind.

import { readdirSync, readlinkSync } from 'node:fs';
import { join } from 'node:path';
import { WorkshopError } from './report.mjs';

const PATH = '/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin';

// The build root's folders that programs need.
const ROOT_FOLDERS = ['/usr', '/etc', '/var/lib', '/var/cache'];
// What no folder of a caller's can take the place of, beside the folders of the build root.
const SYSTEM_FOLDERS = ['/', '/var', '/dev', '/proc'];

// Of root's powers only the one over files: the tree and the cache may belong to somebody else. Others have none to keep.
const CAPABILITIES = ['--cap-drop', 'ALL', ...(process.getuid() === 0 ? ['--cap-add', 'CAP_DAC_OVERRIDE'] : [])];

/**
 * The command line that runs `command` inside the build root.
 *
 * The root itself is read-only; `writable` and `readable` folders of the caller appear under their own names. Each
 * command has its own /tmp and its own process tree, which ends with the command or with the caller, and, unless it asks
 * for the host's `network`, a network of its own in which nobody else is: Wine looks for a display there before it looks
 * for its own session's.
 */
export function sandboxed(root, command, options = {}) {
  const { writable = [], readable = [], mounts = [], env = {}, cwd, network = false } = options;
  const same = (option, paths) => paths.flatMap((path) => [option, path, path]);
  const outside = [...readable, ...writable];
  return [
    'bwrap',
    ...['--die-with-parent', '--unshare-pid', '--unshare-ipc', '--clearenv'],
    ...['--unshare-uts', '--hostname', 'workshop', ...CAPABILITIES],
    ...['--setenv', 'PATH', PATH, '--setenv', 'HOME', '/root', '--setenv', 'LANG', 'C.UTF-8'],
    ...Object.entries(env).flatMap(([name, value]) => ['--setenv', name, String(value)]),
    ...['--tmpfs', '/', '--dir', '/var/tmp', '--dev', '/dev', '--proc', '/proc', '--tmpfs', '/tmp', '--tmpfs', '/root', '--tmpfs', '/run'],
    ...ROOT_FOLDERS.flatMap((folder) => rootMounts(root, folder, outside)),
    ...(network ? ['--ro-bind-try', '/etc/resolv.conf', '/etc/resolv.conf', ...proxies()] : ['--unshare-net']),
    ...['bin', 'sbin', 'lib', 'lib64'].flatMap((top) => ['--symlink', `usr/${top}`, `/${top}`]),
    ...same('--ro-bind', readable),
    ...same('--bind', writable),
    ...mounts,
    ...(cwd ? ['--chdir', cwd] : []),
    '--',
    ...command,
  ];
}

/** One of the build root's folders, read-only; where a caller's folder lies in it, made of its parts, to have room for that. */
function rootMounts(root, folder, outside) {
  const taken = outside.find((path) => path === folder || SYSTEM_FOLDERS.includes(path));
  if (taken) {
    throw new WorkshopError(`${taken} is a folder of the build root itself; tree, cache and results have to be elsewhere`);
  }
  if (!outside.some((path) => path.startsWith(`${folder}/`))) {
    return ['--ro-bind', join(root, folder), folder];
  }
  const parts = readdirSync(join(root, folder), { withFileTypes: true }).flatMap((entry) => {
    const path = join(folder, entry.name);
    return entry.isSymbolicLink() ? ['--symlink', readlinkSync(join(root, path)), path] : rootMounts(root, path, outside);
  });
  return ['--dir', folder, ...parts];
}

const proxies = () =>
  Object.entries(process.env)
    .filter(([name]) => /^(https?|all|no)_proxy$/i.test(name))
    .flatMap(([name, value]) => ['--setenv', name, value]);
