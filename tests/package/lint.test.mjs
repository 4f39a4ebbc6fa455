import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { test } from 'node:test';

const { BRISOLTE_TARBALL: tarball } = process.env;

function run(...words) {
  const { status, stdout, stderr } = spawnSync('npx', ['--no-install', ...words], { encoding: 'utf8' });
  assert.equal(status, 0, `${stdout}\n${stderr}`);
  return stdout;
}

test('publint finds nothing', () => {
  assert.match(run('publint', 'run', '--strict', tarball), /All good!/);
});

test('the types are found by every way of resolving modules', () => {
  run('attw', tarball);
});

test('the types are what their tests say', () => {
  run('tsd');
});
