// The build root seen as a system of its own: commands run in it, on the caller's files, and leave neither a mount
// nor a process behind.

const PATH = '/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin';

/**
 * The command line that runs `command` inside the build root.
 *
 * The root itself is read-only; `writable` and `readable` folders of the caller appear under their own names. Each
 * command has its own /tmp and its own process tree, which ends with the command or with the caller.
 */
export function sandboxed(root, command, { writable = [], readable = [], mounts = [], env = {}, cwd } = {}) {
  const same = (option, paths) => paths.flatMap((path) => [option, path, path]);
  return [
    'bwrap',
    ...['--die-with-parent', '--unshare-pid', '--unshare-ipc', '--clearenv'],
    ...['--setenv', 'PATH', PATH, '--setenv', 'HOME', '/root', '--setenv', 'LANG', 'C.UTF-8'],
    ...Object.entries(env).flatMap(([name, value]) => ['--setenv', name, String(value)]),
    // Read-only are the root's own folders only, so that the caller's can appear anywhere beside them.
    ...['--tmpfs', '/', '--dir', '/var/tmp', '--dev', '/dev', '--proc', '/proc', '--tmpfs', '/tmp', '--tmpfs', '/root', '--tmpfs', '/run'],
    ...['usr', 'etc', 'var/lib', 'var/cache'].flatMap((top) => ['--ro-bind', `${root}/${top}`, `/${top}`]),
    ...['--ro-bind-try', '/etc/resolv.conf', '/etc/resolv.conf'],
    ...['bin', 'sbin', 'lib', 'lib64'].flatMap((top) => ['--symlink', `usr/${top}`, `/${top}`]),
    ...same('--ro-bind', readable),
    ...same('--bind', writable),
    ...mounts,
    ...(cwd ? ['--chdir', cwd] : []),
    '--',
    ...command,
  ];
}
