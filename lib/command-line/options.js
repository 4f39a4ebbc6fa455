'use strict';

// What is written behind `brisolte`, as what a Recorder takes.

const { parseArgs } = require('node:util');

const USAGE = `usage: brisolte list [--json]
       brisolte record [options]
       brisolte screenshot FILE [options]

what to show, the first monitor unless one of these is given:
  --monitor N            the monitor with this number or name
  --window TITLE         the window with this title, or this number as its handle
  --region L,T,W,H       a region: left, top, width, height
  --no-picture           sound alone

for record:
  --file FILE            where the recording goes; without it, a file named after the time in the current folder
  --out DIR              in place of --file: the folder
  --overwrite            lets FILE replace one that is there
  --microphone ID        records a microphone: its id, or default
  --speaker ID           records what a speaker plays: its id, or default
  --audio                records the default microphone and speaker
  --fps N                pictures a second at most, 30 unless said otherwise
  --encoder NAME         video encoder, libx264 unless said otherwise
  --bitrate N            bits per second of the picture, 5000000 unless said otherwise
  --audio-codec NAME     aac, mp3 or opus; unless said otherwise aac in MP4 and MOV, opus in WebM, mp3 elsewhere
  --audio-bitrate N      bits per second of each sound, in AAC and Opus 160000 unless said otherwise
  --seconds N            stops after so long; without it, at Ctrl+C
  --pause FROM,TO        leaves out what happens between these seconds after the start
  --bytes N              stops when the recording is so large
  --free-bytes N         stops when the disk has less room
  --segment-seconds N    splits the recording into files of this length
  --segment-bytes N      splits the recording into files of this size
  --scale W,H            makes the picture smaller until it fits into this size
  --no-cursor            leaves the mouse pointer out; Windows 10 version 2004
  --no-border            leaves out the border that Windows draws; Windows 11
  --verbose              shows the log

  --json                 writes for programs: an object a line
  --help                 shows this`;

const text = { type: 'string' };
const flag = { type: 'boolean', default: false };
const TARGET = { monitor: text, window: text, region: text, json: flag, help: flag };
const OPTIONS = {
  list: { json: flag, help: flag },
  screenshot: TARGET,
  record: {
    ...{ ...TARGET, 'no-picture': flag, file: text, out: text, overwrite: flag, microphone: text, speaker: text, audio: flag },
    ...{ fps: text, encoder: text, bitrate: text, seconds: text, bytes: text, 'free-bytes': text, 'segment-seconds': text },
    ...{ 'segment-bytes': text, 'audio-codec': text, 'audio-bitrate': text, pause: text, scale: text, 'no-cursor': flag },
    ...{ 'no-border': flag, verbose: flag },
  },
};

const LONGEST_TIMER_MS = 2 ** 31 - 1;

/** Something that is wrong with what was written. */
class UsageError extends Error {}

function number(value, name) {
  if (value === undefined) {
    return undefined;
  }
  if (!/^\d+(\.\d+)?(e\d+)?$/i.test(value)) {
    throw new UsageError(`--${name} ${value} is not a number`);
  }
  return Number(value);
}

const numberOrText = (value) => (/^\d+$/.test(value ?? '') ? Number(value) : value);

function wholeNumbers(values, name, kind, count) {
  const numbers = values[name].split(',').map(Number);
  if (numbers.length !== count || !numbers.every(Number.isInteger)) {
    throw new UsageError(`--${name} ${values[name]} is not ${kind}`);
  }
  return numbers;
}

function region(values) {
  if (values.region === undefined) {
    return undefined;
  }
  const [left, top, width, height] = wholeNumbers(values, 'region', 'four whole numbers L,T,W,H', 4);
  return { left, top, width, height };
}

/** Between which milliseconds after the start it is paused. */
function pauseOf(value) {
  if (value === undefined) {
    return undefined;
  }
  const [from, to, ...more] = value.split(',').map((each) => 1000 * Number(each));
  if (more.length > 0 || !(from >= 0 && to > from && to <= LONGEST_TIMER_MS)) {
    throw new UsageError(`--pause ${value} is not two numbers of seconds FROM,TO`);
  }
  return { from, to };
}

function scale(values) {
  if (values.scale === undefined) {
    return undefined;
  }
  const [width, height] = wholeNumbers(values, 'scale', 'two whole numbers W,H', 2);
  return { width, height };
}

const targetOf = (values) => ({
  monitor: numberOrText(values.monitor),
  window: numberOrText(values.window),
  region: region(values),
});

function recordingOf(values) {
  const numbers = Object.fromEntries(
    ['fps', 'bitrate', 'audio-bitrate', 'seconds', 'bytes', 'free-bytes', 'segment-seconds', 'segment-bytes'].map((name) => [name, number(values[name], name)]),
  );
  const otherwise = values.audio ? 'default' : undefined;
  return {
    ...targetOf(values),
    picture: !values['no-picture'],
    file: values.file,
    directory: values.file === undefined ? (values.out ?? '.') : values.out,
    overwrite: values.overwrite,
    microphone: values.microphone ?? otherwise,
    speaker: values.speaker ?? otherwise,
    frameRate: numbers.fps,
    encoder: values.encoder,
    bitrate: numbers.bitrate,
    audioCodec: values['audio-codec'],
    audioBitrate: numbers['audio-bitrate'],
    stopAfter: { seconds: numbers.seconds, bytes: numbers.bytes, freeBytes: numbers['free-bytes'] },
    scale: scale(values),
    cursor: !values['no-cursor'],
    border: !values['no-border'],
    segments: { seconds: numbers['segment-seconds'], bytes: numbers['segment-bytes'] },
  };
}

/**
 * @param {string[]} words behind the program's name
 * @returns {{command: string, json: boolean, verbose: boolean, options: object, file?: string, pause?: {from: number, to: number}}} `command` is `help` when that was
 *   asked for
 * @throws {UsageError}
 */
function read([command, ...words]) {
  if (command === undefined || command === '--help' || command === 'help') {
    return { command: 'help' };
  }
  if (!Object.hasOwn(OPTIONS, command)) {
    throw new UsageError(`${command} is no command; there are list, record and screenshot`);
  }
  const { values, positionals } = parsed(command, words);
  const [file, ...more] = positionals;
  if (values.help) {
    return { command: 'help' };
  }
  if (more.length > 0 || (command === 'screenshot') !== (file !== undefined)) {
    throw new UsageError(command === 'screenshot' ? 'screenshot takes the name of one file' : `${command} takes no ${file}`);
  }
  const options = { list: () => ({}), screenshot: targetOf, record: recordingOf }[command](values);
  return { command, file, options, pause: pauseOf(values.pause), json: values.json, verbose: values.verbose ?? false };
}

function parsed(command, words) {
  try {
    return parseArgs({ args: words, options: OPTIONS[command], allowPositionals: true });
  } catch ({ message }) {
    throw new UsageError(message);
  }
}

module.exports = { read, USAGE, UsageError };
