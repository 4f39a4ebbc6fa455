// In which order files run, and which of them at the same time.

import assert from 'node:assert/strict';
import { test } from 'node:test';
import { inLanes } from '../../tools/test/lanes.mjs';

/** Runs files that end when they are told to; gives what began and ended, in that order. */
async function run(files, order) {
  const events = [];
  const ends = new Map();
  const all = inLanes(files, order, () => {}, (file, output) => {
    events.push(`${file} begins${output ? '' : ', shown at once'}`);
    return new Promise((resolve) => ends.set(file, resolve));
  });
  for (let left = files.length; left > 0; left -= 1) {
    await new Promise(setImmediate);
    const [file, end] = [...ends].at(-1);
    ends.delete(file);
    events.push(`${file} ends`);
    end();
  }
  await all;
  return events;
}

test('two run side by side, the first ones first, those that compare times alone after the others', async () => {
  const events = await run(['/js/a', '/js/timed', '/js/b', '/js/long'], { lanes: 2, first: ['long'], alone: ['js/timed'] });
  assert.deepEqual(events, [
    ...['/js/long begins', '/js/a begins', '/js/a ends', '/js/b begins', '/js/b ends', '/js/long ends'],
    ...['/js/timed begins, shown at once', '/js/timed ends'],
  ]);
});

test('in one lane, and for one file, nothing waits to be shown', async () => {
  const shown = (file) => [`${file} begins, shown at once`, `${file} ends`];
  assert.deepEqual(await run(['a/1', 'a/2'], { lanes: 1 }), [...shown('a/1'), ...shown('a/2')]);
  assert.deepEqual(await run(['a/1'], { lanes: 2 }), shown('a/1'));
});
