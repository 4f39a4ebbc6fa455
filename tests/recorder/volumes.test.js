'use strict';

// How loud sounds are recorded, and what is told of them.

const assert = require('node:assert/strict');
const { once } = require('node:events');
const { test } = require('node:test');
const { recorderOf } = require('./support/recorder');

/** The levels of the first progress that holds. */
async function levelsWhen(recorder, holds) {
  for (;;) {
    const [{ levels }] = await once(recorder, 'progress');
    if (holds(levels)) {
      return levels;
    }
  }
}

test('a level is that of all the time since the progress before', async (t) => {
  const { recorder, named } = recorderOf(t, { microphone: 'default' });
  await recorder.start();
  await once(recorder, 'progress');
  await once(recorder, 'progress');
  await recorder.stop();
  const taken = named('log').filter(({ text }) => text === 'levels taken').length;
  assert.equal(taken, named('progress').length, 'what is asked in between is lost');
});

// The stand-in for the module hears a tenth of the full scale.
test('the levels of the sounds that are recorded are told', async (t) => {
  const { recorder } = recorderOf(t, { microphone: { id: 'mic-1', volume: 4 } });
  await recorder.start();
  const [{ levels }] = await once(recorder, 'progress');
  assert.deepEqual(levels, { microphone: 0.4 });
  const { recorder: silent } = recorderOf(t, {});
  await silent.start();
  const [progress] = await once(silent, 'progress');
  assert.deepEqual(progress.levels, {});
});

test('a sound is muted and made louder while it is recorded, in segments that begin later too', async (t) => {
  const { recorder, named } = recorderOf(t, { microphone: 'default', segments: { seconds: 1 } });
  await recorder.start();
  await recorder.mute('microphone');
  await levelsWhen(recorder, ({ microphone }) => microphone === 0);
  await once(recorder, 'segment');
  await levelsWhen(recorder, ({ microphone }) => microphone === 0);
  assert.equal(named('progress').at(-1).levels.microphone, 0);
  await recorder.unmute('microphone');
  await recorder.setVolume('microphone', 0.5);
  assert.deepEqual(await levelsWhen(recorder, ({ microphone }) => microphone > 0), { microphone: 0.05 });
});

test('what is said of a sound before the start holds from its beginning, and in the next recording', async (t) => {
  const { recorder, named } = recorderOf(t, { microphone: 'default' });
  await recorder.mute('microphone');
  await recorder.start();
  await levelsWhen(recorder, ({ microphone }) => microphone === 0);
  await recorder.stop();
  await recorder.setVolume('microphone', 2);
  await recorder.unmute('microphone');
  await recorder.start();
  await levelsWhen(recorder, ({ microphone }) => microphone === 0.2);
  const texts = named('log').map(({ text }) => text);
  const settings = texts.findIndex((text) => text.startsWith('settings'));
  assert.ok(texts.indexOf('adjusted: {"sound":"microphone","muted":true}') < settings);
});

test('a sound that is not recorded, and a volume that is none, are refused', async (t) => {
  const { recorder } = recorderOf(t, { microphone: 'default' });
  const none = { name: 'TypeError', message: 'speaker is not recorded; there is microphone' };
  await assert.rejects(recorder.mute('speaker'), none);
  await assert.rejects(recorder.mute('toString'), { message: 'toString is not recorded; there is microphone' });
  const wrong = { name: 'TypeError', message: 'volume must be a number from 0 to 10, and is 11' };
  await assert.rejects(recorder.setVolume('microphone', 11), wrong);
  for (const volume of [-1, NaN, '1', undefined]) {
    await assert.rejects(recorder.setVolume('microphone', volume), TypeError);
  }
});
