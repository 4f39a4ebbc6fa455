// The page that the demo ends with, and the log on it.

import assert from 'node:assert/strict';
import { existsSync, readFileSync, writeFileSync } from 'node:fs';
import { basename, dirname, join } from 'node:path';
import { test } from 'node:test';
import { CommandLog } from '../../tools/demo/command-log.mjs';
import { writePage } from '../../tools/demo/page.mjs';
import { scratchFolder } from '../../tools/workshop/scratch.mjs';

const LOG = [
  { source: 'brisolte', level: 'info', text: 'Using MP4 container for encoder: libx264' },
  { source: 'ffmpeg', level: 'warning', text: 'a <b> & "c"' },
];
const PICTURE = { codec: 'h264', type: 'video', width: 1280, height: 720, averageFps: 29.98 };
const SOUND = { codec: 'mp3', type: 'audio', sampleRate: 48000, strongestFrequency: 1000 };

/** A page about a file of this name, in a folder with it and its pictures; gives its path and its text. */
function pageAbout(name) {
  const folder = scratchFolder('demo page');
  const put = (file) => {
    writeFileSync(join(folder, file), '');
    return join(folder, file);
  };
  const found = {
    ...{ file: put(name), container: 'mp4', seconds: 5.004, streams: [PICTURE, SOUND] },
    screenshot: { file: put('screenshot.png'), width: 1280, height: 720 },
  };
  const page = writePage(folder, found, put('frame.png'), LOG);
  return { page, text: readFileSync(page, 'utf8') };
}

test('the page shows the recording in a player, the still, the table and the log', () => {
  const { page, text } = pageAbout('Qorvex-1.mp4');
  assert.equal(basename(page), 'index.html');
  assert.match(text, /<video controls [^>]*src="Qorvex-1\.mp4">/);
  assert.match(text, /<img src="frame\.png"[^]*<img src="screenshot\.png"/);
  assert.match(text, /mp4, 5\.00 s/);
  const rows = [...text.matchAll(/<tr>(.*)<\/tr>/g)].map(([, cells]) => cells.match(/(?<=>)[^<]*(?=<\/t[hd]>)/g));
  assert.deepEqual(rows, [
    ['codec', 'type', 'width', 'height', 'averageFps', 'sampleRate', 'strongestFrequency'],
    ['h264', 'video', '1280', '720', '29.98', '', ''],
    ['mp3', 'audio', '', '', '', '48000', '1000'],
  ]);
  assert.match(text, /<span class="info">brisolte info: Using MP4 container for encoder: libx264<\/span>/);
  assert.match(text, /ffmpeg warning: a &#60;b&#62; &#38; &#34;c&#34;/);
});

test('the page loads what is beside it and nothing else', () => {
  const { page, text } = pageAbout('a # ü %.mp4');
  const loaded = [...text.matchAll(/\b(?:src|href|poster)="([^"]*)"/g)].map(([, target]) => target);
  assert.ok(loaded.length > 3);
  loaded.forEach((target) => assert.ok(existsSync(join(dirname(page), decodeURIComponent(target))), target));
  assert.doesNotMatch(text, /https?:|\/\/|@import|url\(|<script/);
});

test('a container that browsers do not play gets no player', () => {
  const { text } = pageAbout('Qorvex-1.avi');
  assert.doesNotMatch(text, /<video/);
  assert.match(text, /Browsers do not play this container/);
});

test('the log is kept, and what else is written is shown, in whatever pieces it comes', () => {
  const written = Buffer.from('recording 00:00:01\r\nbrisolte info: für C:\\ä\r\nffmpeg debug: more\r\nstopped\r\n');
  for (const size of [1, 7, written.length]) {
    const shown = [];
    const log = new CommandLog({ write: (text) => shown.push(text) }, false);
    for (let at = 0; at < written.length; at += size) {
      log.write(written.subarray(at, at + size));
    }
    assert.deepEqual(shown, ['recording 00:00:01\n', 'stopped\n']);
    assert.deepEqual(log.entries, [
      { source: 'brisolte', level: 'info', text: 'für C:\\ä' },
      { source: 'ffmpeg', level: 'debug', text: 'more' },
    ]);
  }
});

test('with all of it, the log is shown where it came', () => {
  const shown = [];
  const log = new CommandLog({ write: (text) => shown.push(text) }, true);
  log.write(Buffer.from('brisolte info: one\nrecording\n'));
  assert.deepEqual(shown, ['brisolte info: one\n', 'recording\n']);
});
