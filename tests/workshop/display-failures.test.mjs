// What runs again, and what does not.

import assert from 'node:assert/strict';
import { test } from 'node:test';
import { unlessDisplayFails } from '../../tools/test/display-failures.mjs';

const GOOD = { passed: 2, failed: 0, code: 0 };
const BAD = { passed: 1, failed: 1, code: 1 };

/** Runs what writes these pieces and gives these results, one a run; gives the last result and what was shown. */
async function run(pieces, ...results) {
  const shown = [];
  const output = { write: (chunk) => shown.push(chunk.toString()) };
  const result = await unlessDisplayFails({ stdout: output, stderr: output }, ({ stderr }) => {
    pieces.forEach((piece) => stderr.write(Buffer.from(piece)));
    return results.shift();
  });
  return { result, shown: shown.join(''), left: results.length };
}

test('what failed on a display that failed runs again, and what it says is shown', async () => {
  const { result, shown, left } = await run(['X Error of failed request:  GLXBad', 'Window\n'], BAD, GOOD);
  assert.deepEqual([result, left], [GOOD, 0]);
  assert.equal(shown.match(/GLXBadWindow\n/g).length, 2);
  assert.ok(shown.includes('the display failed (GLXBadWindow); this runs again\n'));
});

test('it runs three times at most', async () => {
  assert.deepEqual(await run(['GLXBadWindow'], BAD, BAD, GOOD).then(({ result }) => result), GOOD);
  const { result, left } = await run(['GLXBadWindow'], BAD, BAD, BAD, GOOD);
  assert.deepEqual([result, left], [BAD, 1]);
});

test('a failure of its own stays, and so does a success', async () => {
  assert.deepEqual((await run(['Error: it failed'], BAD, GOOD)).left, 1);
  assert.deepEqual((await run(['GLXBadWindow'], GOOD, BAD)).left, 1);
});
