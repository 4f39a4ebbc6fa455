#!/usr/bin/env node
'use strict';

// npx brisolte: lists, records and takes screenshots. Ends with 0 when it did what was asked, with 1 when that could not be done,
// with 2 when what was asked makes no sense.

const { Recorder } = require('../recorder');
const { allLists, listsText } = require('./lists');
const { read, USAGE, UsageError } = require('./options');
const { StatusLine, statusText } = require('./status');

const say = (text) => process.stdout.write(`${text}\n`);
const sayJson = (object) => say(JSON.stringify(object));

async function list({ json }) {
  const lists = await allLists(Recorder);
  say(json ? JSON.stringify(lists) : listsText(lists));
}

async function screenshot({ options, file, json }) {
  const written = await Recorder.screenshot(options, file);
  if (json) {
    sayJson({ file: written });
  } else {
    say(written);
  }
}

/** Pauses between these milliseconds from now on, unless the recording ends before. */
function pauseBetween(recorder, { from, to }) {
  setTimeout(() => recorder.pause().catch(() => {}), from).unref();
  setTimeout(() => recorder.resume().catch(() => {}), to).unref();
}

async function record({ options, pause, json, verbose }) {
  const recorder = new Recorder({ ...options, logLevel: verbose ? 'debug' : 'error' });
  const status = new StatusLine(process.stderr);
  if (json) {
    const events = ['start', 'progress', 'warning', 'pause', 'resume', 'segment'];
    events.forEach((event) => recorder.on(event, (given) => sayJson({ event, ...given })));
  } else {
    recorder.on('progress', (progress) => status.show(progress));
    recorder.on('warning', ({ message }) => {
      status.end();
      process.stderr.write(`${message}\n`);
    });
  }
  if (verbose) {
    recorder.on('log', ({ level, source, text }) => {
      status.end();
      process.stderr.write(`${source} ${level}: ${text}\n`);
    });
  }
  const stopped = new Promise((resolve) => recorder.once('stop', resolve));
  process.on('SIGINT', () => recorder.stop().catch(() => {}));
  await recorder.start();
  if (pause) {
    pauseBetween(recorder, pause);
  }
  await stopped;
  status.end();
  const result = await recorder.stop();
  await recorder.close();
  if (json) {
    sayJson({ event: 'stop', ...result });
  } else {
    process.stderr.write(`${endText(result)}\n`);
    result.files.forEach(say);
  }
}

const REASONS = {
  requested: 'stopped',
  seconds: 'stopped at its limit of time',
  bytes: 'stopped at its limit of size',
  freeBytes: 'stopped because the disk is nearly full',
};

const endText = ({ reason, problem, ...amounts }) => `${REASONS[reason]}: ${statusText(amounts)}${problem ? `; ${problem}` : ''}`;

async function main() {
  const request = read(process.argv.slice(2));
  const commands = { list, record, screenshot, help: () => say(USAGE) };
  await commands[request.command](request);
}

main().catch((error) => {
  const wrong = error instanceof UsageError || error instanceof TypeError;
  if (process.argv.includes('--json')) {
    sayJson({ event: 'error', code: error.code, message: error.message, failures: error.failures, files: error.files });
  } else {
    process.stderr.write(`${error.message}\n${wrong ? 'brisolte --help shows what there is\n' : ''}`);
    error.files?.forEach((file) => process.stderr.write(`can be played: ${file}\n`));
  }
  process.exitCode = wrong ? 2 : 1;
});
