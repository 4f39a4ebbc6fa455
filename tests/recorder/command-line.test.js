'use strict';

const assert = require('node:assert/strict');
const { spawn } = require('node:child_process');
const { once } = require('node:events');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { read, USAGE } = require('../../lib/command-line/options');
const { bytesText, StatusLine, timeText } = require('../../lib/command-line/status');
const { waitFor } = require('../js/support/wait');
const { folderOf } = require('./support/recorder');

const PROGRAM = path.join(__dirname, '..', '..', 'lib', 'command-line', 'main.js');
const BEFORE = ['--require', path.join(__dirname, 'support', 'with-stand-in.js')];

/** Runs the command line in a folder; `while` is called with the running program. */
async function run(t, words, { cwd = folderOf(t), meanwhile } = {}) {
  const child = spawn(process.execPath, [...BEFORE, PROGRAM, ...words], { cwd, stdio: ['ignore', 'pipe', 'pipe'] });
  const said = { output: '', errors: '' };
  child.stdout.on('data', (text) => (said.output += text));
  child.stderr.on('data', (text) => (said.errors += text));
  const ended = once(child, 'close');
  await meanwhile?.(child, said);
  const [code] = await ended;
  return { code, cwd, ...said };
}

test('what is written becomes what a recorder takes', () => {
  const picture = ['record', '--region=-10,20,300,200', '--monitor', '1', '--fps', '15', '--scale', '640,360', '--no-cursor', '--no-border'];
  const sound = ['--audio', '--speaker', 'x', '--audio-codec', 'mp3', '--audio-bitrate', '96000'];
  const { command, json, verbose, options } = read([...picture, ...sound, '--seconds', '1.5', '--bytes', '4e9', '--segment-seconds', '60']);
  assert.deepEqual([command, json, verbose], ['record', false, false]);
  assert.deepEqual(JSON.parse(JSON.stringify(options)), {
    monitor: 1,
    region: { left: -10, top: 20, width: 300, height: 200 },
    picture: true,
    directory: '.',
    overwrite: false,
    microphone: 'default',
    speaker: 'x',
    frameRate: 15,
    audioCodec: 'mp3',
    audioBitrate: 96_000,
    stopAfter: { seconds: 1.5, bytes: 4e9 },
    segments: { seconds: 60 },
    scale: { width: 640, height: 360 },
    cursor: false,
    border: false,
  });
  const { file, options: target } = read(['screenshot', 'a.png', '--window', 'Notes 2']);
  assert.deepEqual([file, target.window], ['a.png', 'Notes 2']);
});

test('a recording is paused between two moments', async (t) => {
  const words = ['record', '--seconds', '1.5', '--pause', '0.5,2', '--json'];
  const { code, output } = await run(t, words);
  assert.equal(code, 0);
  const told = output.trim().split('\n').map((line) => JSON.parse(line));
  assert.deepEqual(told.map(({ event }) => event).filter((event) => event !== 'progress'), ['start', 'pause', 'resume', 'stop']);
  const [paused, resumed] = ['pause', 'resume'].map((name) => told.find(({ event }) => event === name));
  assert.ok(paused.seconds >= 0.4 && paused.seconds < 1.5, `${paused.seconds} s`);
  assert.equal(resumed.seconds, paused.seconds);
  assert.ok(told.some(({ event, paused: isPaused }) => event === 'progress' && isPaused));
});

test('what makes no sense is told, with exit code 2', async (t) => {
  const wrong = [
    [['play'], /^play is no command; there are list, record and screenshot$/m],
    [['record', '--unknown'], /Unknown option '--unknown'/],
    [['record', '--region', '1,2,3'], /^--region 1,2,3 is not four whole numbers L,T,W,H$/m],
    [['record', '--pause', '3'], /^--pause 3 is not two numbers of seconds FROM,TO$/m],
    [['record', '--pause', '3,2'], /^--pause 3,2 is not two numbers of seconds FROM,TO$/m],
    [['record', '--scale', '640'], /^--scale 640 is not two whole numbers W,H$/m],
    [['record', '--seconds', 'x'], /^--seconds x is not a number$/m],
    [['record', '--fps', '500'], /^frameRate must be a whole number from 1 to 120, and is 500$/m],
    [['record', '--file', 'a.avi'], /^file must be a name that ends in \.mp4/m],
    [['record', 'a.mp4'], /^record takes no a\.mp4$/m],
    [['screenshot'], /^screenshot takes the name of one file$/m],
  ];
  for (const [words, message] of wrong) {
    const { code, errors, output } = await run(t, words);
    assert.deepEqual([code, output], [2, '']);
    assert.match(errors, message);
    assert.match(errors, /^brisolte --help shows what there is$/m);
  }
});

test('help is given, and names every option', async (t) => {
  for (const words of [[], ['--help'], ['help'], ['record', '--help']]) {
    const { code, output } = await run(t, words);
    assert.deepEqual([code, output], [0, `${USAGE}\n`]);
  }
});

test('a recording shows how far it is, once a second, and then its file alone on standard output', async (t) => {
  const { code, cwd, output, errors } = await run(t, ['record', '--file', 'talk.mp4', '--seconds', '2.2']);
  assert.deepEqual([code, output], [0, `${path.join(fs.realpathSync(cwd), 'talk.mp4')}\n`]);
  const lines = errors.trimEnd().split('\n');
  assert.match(lines[0], /^recording 00:00:01, \d+\.\d kB, \d+\.\d GB free$/);
  assert.match(lines.at(-1), /^stopped at its limit of time: 00:00:02, /);
  assert.ok(fs.existsSync(path.join(cwd, 'talk.mp4')));
});

test('Ctrl+C completes the file', async (t) => {
  const { code, cwd, output } = await run(t, ['record', '--out', '.'], {
    meanwhile: async (child, said) => {
      await waitFor('the recording', () => said.errors.includes('recording'));
      child.kill('SIGINT');
    },
  });
  assert.equal(code, 0);
  const [name] = fs.readdirSync(cwd);
  assert.equal(output, `${path.join(fs.realpathSync(cwd), name)}\n`);
  assert.ok(fs.readFileSync(path.join(cwd, name)).includes('moov'));
});

test('programs get an object a line', async (t) => {
  const { code, output, errors } = await run(t, ['record', '--file', 'a.mp4', '--segment-seconds', '1', '--seconds', '1.5', '--json']);
  assert.deepEqual([code, errors], [0, '']);
  const events = output.trimEnd().split('\n').map((line) => JSON.parse(line));
  assert.deepEqual(events.map(({ event }) => event).filter((event) => event !== 'progress'), ['start', 'segment', 'stop']);
  assert.deepEqual([events.at(-1).reason, events.at(-1).files.length], ['seconds', 2]);
});

test('what the system cannot leave out is said on standard error', async (t) => {
  const words = ['record', '--encoder', 'stays', '--no-cursor', '--seconds', '1'];
  const { code, errors } = await run(t, words);
  assert.equal(code, 0);
  assert.match(errors, /^The mouse pointer is in the recording: /m);
  const json = await run(t, [...words, '--json']);
  const events = json.output.trimEnd().split('\n').map((line) => JSON.parse(line));
  assert.deepEqual(events.filter(({ event }) => event === 'warning').map(({ code: which }) => which), ['cursorStays', 'borderStays']);
});

test('what fails is told with its reason, and exit code 1', async (t) => {
  const { code, errors, output } = await run(t, ['record', '--encoder', 'refuses']);
  assert.deepEqual([code, output], [1, '']);
  assert.equal(errors, 'The recording did not start. Encoder refuses not found! Recorder.encoders() lists the names that can be given.\n');
  const json = await run(t, ['record', '--encoder', 'refuses', '--json']);
  assert.deepEqual([json.code, JSON.parse(json.output).code], [1, 'ERR_RECORDER_START']);
});

test('a lost recording is told, and what can be played of it', async (t) => {
  const { code, errors } = await run(t, ['record', '--encoder', 'diesLater']);
  assert.equal(code, 1);
  assert.match(errors, /The recorder's process ended unexpectedly/);
});

test('a screenshot is written and named', async (t) => {
  const { code, cwd, output } = await run(t, ['screenshot', 'a.png', '--window', '42']);
  assert.deepEqual([code, output], [0, `${path.join(fs.realpathSync(cwd), 'a.png')}\n`]);
  assert.ok(fs.existsSync(path.join(cwd, 'a.png')));
});

test('sizes and times are shown as people read them', () => {
  assert.deepEqual([0, 999, 1000, 123_456_789, 4e12, 5e15].map(bytesText), ['0 B', '999 B', '1.0 kB', '123.5 MB', '4.0 TB', '5000.0 TB']);
  assert.deepEqual([0, 59.9, 61, 3600, 360_061].map(timeText), ['00:00:00', '00:00:59', '00:01:01', '01:00:00', '100:01:01']);
});

test('on a terminal the status stays in its line', () => {
  const written = [];
  const status = new StatusLine({ isTTY: true, write: (text) => written.push(text) });
  status.show({ seconds: 1, bytes: 123_456 });
  status.show({ seconds: 2, bytes: 1_000_000 });
  status.end();
  status.end();
  assert.deepEqual(written, ['\rrecording 00:00:01, 123.5 kB', '\rrecording 00:00:02, 1.0 MB  ', '\n']);
});
