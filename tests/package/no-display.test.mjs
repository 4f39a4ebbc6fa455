import assert from 'node:assert/strict';
import { readFileSync, writeFileSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { test } from 'node:test';
import { runUnderWine, windowsPath } from '../../tools/wine/runner.mjs';

const project = dirname(dirname(process.env.BRISOLTE_PACKAGE));

test('in a session without a display the constructor says that there is no device', async () => {
  const [script, answer] = ['no-display.js', 'no-display.txt'].map((name) => join(project, name));
  writeFileSync(
    script,
    `const { Brisolte } = require('brisolte');
    let answer = 'an instance';
    try { new Brisolte(); } catch (error) { answer = String(error); }
    require('node:fs').writeFileSync(${JSON.stringify(windowsPath(answer))}, answer);`,
  );
  const code = await runUnderWine('node', [windowsPath(script)], { screen: 'none', timeout: 60, writable: [project] });
  assert.equal(code, 0);
  assert.equal(readFileSync(answer, 'utf8'), 'Error: Failed to initialize Direct3D11 device');
});
