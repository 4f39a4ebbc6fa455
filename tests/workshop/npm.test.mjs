// What is installed and fetched with npm, and what never is.

import assert from 'node:assert/strict';
import { existsSync, mkdirSync, writeFileSync } from 'node:fs';
import { createServer } from 'node:http';
import { join } from 'node:path';
import { test } from 'node:test';
import { npmPackages } from '../../tools/workshop/npm-packages.mjs';
import { outputOf } from '../../tools/workshop/processes.mjs';
import { scratchFolder } from '../../tools/workshop/scratch.mjs';
import { lint } from '../../tools/workshop/style.mjs';

/** Sets a variable of the environment for the time of a test. */
function setVariable(t, name, value) {
  const before = process.env[name];
  process.env[name] = value;
  t.after(() => (before === undefined ? delete process.env[name] : (process.env[name] = before)));
}

test("the tree's packages are whole and no script runs, whatever the user's settings are", async (t) => {
  const tree = scratchFolder('npm');
  const write = (path, value) => writeFileSync(join(tree, path), JSON.stringify(value));
  mkdirSync(join(tree, 'tool'));
  write('tool/package.json', { name: 'tool', version: '1.0.0' });
  const scripts = { postinstall: 'touch ran-a-script' };
  write('package.json', { name: 'tree', version: '1.0.0', scripts, devDependencies: { tool: 'file:./tool' } });
  outputOf(['npm', 'install', '--package-lock-only', '--ignore-scripts', '--offline', '--no-audit'], { cwd: tree });
  setVariable(t, 'NODE_ENV', 'production');
  await npmPackages(tree);
  assert.ok(existsSync(join(tree, 'node_modules', 'tool')), 'a package for development');
  assert.ok(!existsSync(join(tree, 'ran-a-script')));
});

test('a linter that is not there is not fetched', async (t) => {
  const asked = [];
  const registry = createServer((request, response) => {
    asked.push(request.url);
    response.writeHead(404).end();
  });
  t.after(() => registry.close());
  await new Promise((resolve) => registry.listen(0, '127.0.0.1', resolve));
  setVariable(t, 'npm_config_registry', `http://127.0.0.1:${registry.address().port}/`);
  setVariable(t, 'npm_config_yes', 'true');
  await assert.rejects(lint(scratchFolder('lint')), /eslint/);
  assert.deepEqual(asked, []);
});
