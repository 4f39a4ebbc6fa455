'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { scenario } = require('./support/scenario');
const { scratchFolder } = require('./support/scratch');

test('a recording that needs what is not available fails, and the next one starts', async () => {
  const { value } = await scenario(
    ({ Brisolte, log }, { dir }) => {
      const attempts = [
        { calls: [['setMode', 0], ['setEncoder', 'mf_h264']], undo: ['setEncoder', 'libx264'] },
        { calls: [['setMode', 0], ['setEncoder', 'mf_hevc']], undo: ['setEncoder', 'libx264'] },
      ];
      const capture = new Brisolte();
      capture.setOutputDir(dir);
      return attempts.map(({ calls, undo }) => {
        calls.forEach(([method, value]) => capture[method](value));
        const mark = log.mark();
        const outcome = [capture.startRecord(), capture.isCapturing()];
        const { errors } = log.since(mark);
        capture[undo[0]](undo[1]);
        return [...outcome, errors, capture.startRecord(), capture.stopRecord()];
      });
    },
    { dir: scratchFolder() },
  );
  value.forEach(([started, capturing, errors, ...after]) => {
    assert.deepEqual([started, capturing], [false, false]);
    assert.match(errors[0], /not available/);
    assert.equal(errors.at(-1), 'Failed to initialize encoder');
    assert.deepEqual(after, [true, true]);
  });
});
