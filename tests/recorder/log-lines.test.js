'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { LogLines, markOf } = require('../../lib/log-lines');

function logLines() {
  const entries = [];
  return { log: new LogLines((entry) => entries.push(entry)), entries };
}

test('a line of the module is taken apart, in whatever pieces it comes', () => {
  const { log, entries } = logLines();
  [...'2026-03-07 14:05:09 [WARNING] Überlast: 3 [x]\r\n'].forEach((letter) => log.output(letter));
  const time = new Date(2026, 2, 7, 14, 5, 9);
  assert.deepEqual(entries, [{ time, level: 'warning', source: 'brisolte', text: 'Überlast: 3 [x]' }]);
});

test("the line break of Windows' own words makes no line, and two lines in one are kept as they are", () => {
  const { log, entries } = logLines();
  log.output('2026-03-07 14:05:09 [ERROR] HRESULT: 0x80070005 - Access is denied.\r\n\r\nmixed up\n');
  assert.deepEqual(
    entries.map(({ level, text }) => [level, text]),
    [
      ['error', 'HRESULT: 0x80070005 - Access is denied.'],
      ['info', 'mixed up'],
    ],
  );
});

test("FFmpeg's lines and those of Node.js are told apart", () => {
  const { log, entries } = logLines();
  log.errors('[libx264 @ 000001a2] profile High\n[mp4 @ 0x55d0] moving\nnode:internal\n');
  assert.deepEqual(entries.map(({ source }) => source), ['ffmpeg', 'ffmpeg', 'node']);
});

test('a mark ends the wait for what was logged before it, also in the middle of a line and in pieces', async () => {
  const { log, entries } = logLines();
  const waiting = log.until(12);
  const mark = markOf(12);
  log.output(`2026-03-07 14:05:09 [INFO] on${mark.slice(0, 2)}`);
  log.output(`${mark.slice(2)}e\n`);
  await waiting;
  assert.deepEqual(entries.map(({ text }) => text), ['one']);
  log.output(markOf(13));
  await log.until(13);
});

test('the end gives what is left, and ends all waits', async () => {
  const { log, entries } = logLines();
  const waiting = log.until(1);
  log.output('2026-03-07 14:05:09 [ERROR] cut off');
  log.end();
  await Promise.all([waiting, log.until(2)]);
  assert.deepEqual(entries.map(({ text }) => text), ['cut off']);
});

test('the latest lines and the latest failures are kept, however many there were', () => {
  const { log } = logLines();
  log.output('2026-03-07 14:05:09 [ERROR] before\n');
  const before = log.failureCount;
  assert.deepEqual(log.failuresSince(before), []);
  for (let i = 0; i < 1000; i += 1) {
    log.output(`2026-03-07 14:05:09 [ERROR] ${i}\n`);
  }
  assert.equal(log.failureCount, 1001);
  assert.equal(log.last.length, 50);
  assert.deepEqual(log.failuresSince(before).slice(-2), ['998', '999']);
  assert.deepEqual(log.failuresSince(1000), ['999']);
});
