'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { Peer } = require('../../lib/protocol');

const LONG = 10_000;
const noSilence = () => new Error('no answer');

/** Two ends that hear each other, and all messages between them, as they are after a channel. */
function conversation(calls, told) {
  const messages = [];
  const over = (to) => (message) => {
    const sent = JSON.parse(JSON.stringify(message));
    messages.push(sent);
    setImmediate(() => to().receive(sent));
  };
  const here = new Peer({ post: over(() => there) });
  const there = new Peer({ post: over(() => here), calls, told });
  return { here, there, messages };
}

test('a question gets its own answer, whatever is answered first', async () => {
  const waits = [];
  const { here, messages } = conversation({ double: (n) => new Promise((resolve) => waits.push(() => resolve(2 * n))) });
  const answers = [here.ask('double', 4, LONG, noSilence), here.ask('double', 5, LONG, noSilence)];
  while (waits.length < 2) {
    await new Promise(setImmediate);
  }
  waits.reverse().forEach((answer) => answer());
  assert.deepEqual(await Promise.all(answers), [8, 10]);
  assert.deepEqual(messages, [
    { request: 1, call: 'double', given: 4 },
    { request: 2, call: 'double', given: 5 },
    { answer: 2, value: 10 },
    { answer: 1, value: 8 },
  ]);
});

test('what cannot be done is answered with its code and its sentence', async () => {
  const refuse = () => {
    throw Object.assign(new Error('not today'), { code: 'ERR_X' });
  };
  const { here } = conversation({ refuse });
  await assert.rejects(here.ask('refuse', undefined, LONG, noSilence), { code: 'ERR_X', message: 'not today' });
});

test('only what is offered can be asked for', async () => {
  const { here } = conversation({});
  for (const call of ['constructor', 'toString', '__proto__', 'nothing']) {
    await assert.rejects(here.ask(call, undefined, LONG, noSilence), { message: `there is no ${call}` });
  }
});

test('a question without an answer in time is rejected, and a late answer does no harm', async () => {
  let answer;
  const { here } = conversation({ wait: () => new Promise((resolve) => (answer = resolve)) });
  // The limit does not keep a process alive; this does.
  const alive = setInterval(() => {}, 1000);
  await assert.rejects(here.ask('wait', undefined, 50, noSilence), { message: 'no answer' });
  answer('late');
  await new Promise(setImmediate);
  clearInterval(alive);
});

test('when the other end is gone all questions are rejected, also new ones', async () => {
  const { here } = conversation({ wait: () => new Promise(() => {}) });
  const asked = here.ask('wait', undefined, LONG, noSilence);
  here.close(new Error('gone'));
  await assert.rejects(asked, { message: 'gone' });
  await assert.rejects(here.ask('wait', undefined, LONG, noSilence), { message: 'gone' });
});

test('an event is told without an answer', async () => {
  const heard = [];
  const { here, messages } = conversation({}, (event, given) => heard.push([event, given]));
  here.tell('segment', { file: 'a' });
  await new Promise(setImmediate);
  assert.deepEqual(heard, [['segment', { file: 'a' }]]);
  assert.equal(messages.length, 1);
});

test('messages that are none do no harm', () => {
  const { here } = conversation({});
  [null, undefined, 5, 'text', {}, [], { answer: 99 }, { event: 'nothing' }].forEach((message) => here.receive(message));
});
