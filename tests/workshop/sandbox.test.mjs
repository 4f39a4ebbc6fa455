// What a program in the sandbox can reach of the machine.

import assert from 'node:assert/strict';
import { spawn, spawnSync } from 'node:child_process';
import { existsSync } from 'node:fs';
import { createServer } from 'node:net';
import { test } from 'node:test';
import { buildRoot } from '../../tools/workshop/build-root.mjs';
import { WorkshopError } from '../../tools/workshop/report.mjs';
import { sandboxed } from '../../tools/workshop/sandbox.mjs';

const root = await buildRoot();

function run(command, options) {
  const [program, ...words] = sandboxed(root, command, options);
  const { status, stdout, stderr } = spawnSync(program, words, { encoding: 'utf8' });
  assert.equal(status, 0, stderr);
  return stdout;
}

test('a server of the host is out of reach', async (t) => {
  const server = createServer().listen(0, '127.0.0.1');
  t.after(() => server.close());
  await new Promise((resolve) => server.once('listening', resolve));
  const connect = (options) => {
    const [program, ...words] = sandboxed(root, ['bash', '-c', `echo > /dev/tcp/127.0.0.1/${server.address().port}`], options);
    return new Promise((resolve) => spawn(program, words, { stdio: 'ignore' }).on('close', resolve));
  };
  assert.notEqual(await connect({}), 0);
  assert.equal(await connect({ network: true }), 0, 'where something is fetched the host is there');
});

test('root keeps the power over files only, and the machine its name', () => {
  const [, powers] = /CapEff:\s*(\w+)/.exec(run(['cat', '/proc/self/status']));
  assert.equal(parseInt(powers, 16) & ~2, 0, powers);
  assert.equal(run(['hostname']), 'workshop\n');
});

test("a caller's folder can lie among the system's own", () => {
  const folder = '/usr/share/mmdebstrap';
  assert.ok(existsSync(folder), 'a folder of the host that the build root has not');
  assert.notEqual(run(['ls', folder], { readable: [folder] }), '');
  assert.match(run(['x86_64-w64-mingw32ucrt-g++', '--version'], { readable: [folder] }), /Free Software Foundation/);
});

test("a folder that the build root has itself is refused with its name", () => {
  for (const folder of ['/usr/share', '/var/lib', '/var', '/']) {
    assert.throws(
      () => sandboxed(root, ['true'], { writable: [folder] }),
      (error) => error instanceof WorkshopError && error.message.startsWith(`${folder} is a folder of the build root itself`),
    );
  }
});

test('what fetches something knows the proxy, nothing else does', (t) => {
  t.after(() => delete process.env.https_proxy);
  process.env.https_proxy = 'http://proxy.example:3128';
  assert.match(run(['env'], { network: true }), /^https_proxy=http:\/\/proxy\.example:3128$/m);
  assert.doesNotMatch(run(['env']), /proxy/);
});
