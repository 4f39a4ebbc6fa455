'use strict';

// What a caller asks for, as the process takes it: checked, with defaults and whole paths.

const path = require('node:path');
const { containerOf, MEDIA_FOUNDATION, soundsOf } = require('./containers');
const { targetOfSource } = require('./electron');

/** The levels of a log, from all of it to the least. */
const LEVELS = ['debug', 'info', 'warning', 'error'];
const MOST_SECONDS = 10 * 365 * 24 * 3600;

function fail(name, wanted, value) {
  throw new TypeError(`${name} must be ${wanted}, and is ${shown(value)}`);
}

const shown = (value) => (typeof value === 'string' ? JSON.stringify(value) : typeof value === 'object' && value ? 'an object' : String(value));

const isWhole = (value, least, most) => Number.isInteger(value) && value >= least && value <= most;
const isText = (value) => typeof value === 'string' && value !== '' && !value.includes('\0');
const isNumber = (value, least, most) => typeof value === 'number' && value >= least && value <= most;

function whole(options, name, least, most) {
  const value = options[name];
  if (value !== undefined && !isWhole(value, least, most)) {
    fail(name, `a whole number from ${least} to ${most}`, value);
  }
  return value;
}

function text(options, name) {
  const value = options[name];
  if (value !== undefined && !isText(value)) {
    fail(name, 'a text', value);
  }
  return value;
}

const MOST_VOLUME = 10;

const isVolume = (value) => isNumber(value, 0, MOST_VOLUME);

/** A sound as { id, volume }; undefined when it is left out. */
function sound(options, name) {
  const value = options[name];
  if (value === undefined || isText(value)) {
    return value === undefined ? undefined : { id: value, volume: 1 };
  }
  if (value === null || typeof value !== 'object') {
    fail(name, 'a text, or an object with id and volume', value);
  }
  refuseUnknown(value, ['id', 'volume'], `${name}.`);
  const { id, volume = 1 } = value;
  if (!isText(id)) {
    fail(`${name}.id`, 'a text', id);
  }
  if (!isVolume(volume)) {
    fail(`${name}.volume`, `a number from 0 to ${MOST_VOLUME}`, volume);
  }
  return { id, volume };
}

/** @throws {TypeError} when it is none */
function volumeOf(value) {
  return isVolume(value) ? value : fail('volume', `a number from 0 to ${MOST_VOLUME}`, value);
}

function truth(options, name, otherwise) {
  const value = options[name] ?? otherwise;
  if (typeof value !== 'boolean') {
    fail(name, 'true or false', value);
  }
  return value;
}

/** An object with only these properties, each a number from its least to its most; undefined when it is left out. */
function amounts(options, name, ranges) {
  const value = options[name];
  if (value === undefined) {
    return {};
  }
  if (value === null || typeof value !== 'object') {
    fail(name, `an object with ${listed(Object.keys(ranges))}`, value);
  }
  refuseUnknown(value, Object.keys(ranges), `${name}.`);
  for (const [key, [least, most]] of Object.entries(ranges)) {
    if (value[key] !== undefined && !isNumber(value[key], least, most)) {
      fail(`${name}.${key}`, `a number from ${least} to ${most}`, value[key]);
    }
  }
  return Object.fromEntries(Object.keys(ranges).map((key) => [key, value[key]]));
}

const listed = (names) => `${names.slice(0, -1).join(', ')} and ${names.at(-1)}`;

function refuseUnknown(options, known, before = '') {
  const unknown = Object.keys(options).find((name) => !known.includes(name));
  if (unknown !== undefined) {
    throw new TypeError(`${before}${unknown} is no option; there are ${listed(known)}`);
  }
}

const REGION = ['left', 'top', 'width', 'height'];

function region(value) {
  if (value === null || typeof value !== 'object' || !REGION.every((name) => isWhole(value[name], -(2 ** 31), 2 ** 31 - 1))) {
    fail('region', `an object with the whole numbers ${listed(REGION)}`, value);
  }
  if (value.width < 1 || value.height < 1) {
    throw new TypeError('region must have a width and a height above 0');
  }
  return Object.fromEntries(REGION.map((name) => [name, value[name]]));
}

const LARGEST = 16_384;

/** { width, height }, into which pictures must fit; undefined when it is left out. */
function scale({ scale: value, encoder }) {
  const names = ['width', 'height'];
  if (value === undefined) {
    return undefined;
  }
  if (value === null || typeof value !== 'object' || !names.every((name) => isWhole(value[name], 16, LARGEST))) {
    fail('scale', `an object with the whole numbers ${listed(names)}, from 16 to ${LARGEST}`, value);
  }
  refuseUnknown(value, names, 'scale.');
  refuseOfMediaFoundation('scale', encoder);
  return { width: value.width, height: value.height };
}

/** Names and values as FFmpeg reads them. */
function encoderOptions({ encoderOptions: value = {}, encoder }) {
  if (value === null || typeof value !== 'object') {
    fail('encoderOptions', "an object with names and values of FFmpeg's", value);
  }
  const entries = Object.entries(value);
  const [wrong] = entries.filter(([, each]) => !Number.isFinite(each) && typeof each !== 'boolean' && !isText(each));
  if (wrong) {
    fail(`encoderOptions.${wrong[0]}`, 'a number, a text, true or false', wrong[1]);
  }
  if (entries.length > 0) {
    refuseOfMediaFoundation('encoderOptions', encoder);
  }
  return Object.fromEntries(entries.map(([name, each]) => [name, String(typeof each === 'boolean' ? Number(each) : each)]));
}

function refuseOfMediaFoundation(name, encoder) {
  if (MEDIA_FOUNDATION.includes(encoder)) {
    throw new TypeError(`${name} is for encoders of FFmpeg's, and ${encoder} is none`);
  }
}

const TARGETS = ['monitor', 'window', 'region', 'source', 'picture'];

/** What is shown: { monitor }, { window }, { region, monitor }, { place } of a monitor, or nothing. */
function target(options) {
  const { monitor, window, picture = true } = options;
  if (typeof picture !== 'boolean') {
    fail('picture', 'true or false', picture);
  }
  const given = TARGETS.filter((name) => (name === 'picture' ? !picture : options[name] !== undefined));
  if (given.length > 1 && given.join() !== 'monitor,region') {
    throw new TypeError(`${given[0]} and ${given[1]} cannot be given together`);
  }
  if (!picture) {
    return undefined;
  }
  if (monitor !== undefined && !isText(monitor) && !isWhole(monitor, 0, 1000)) {
    fail('monitor', 'the index or the name of a monitor', monitor);
  }
  if (options.source !== undefined) {
    return targetOfSource(options.source) ?? fail('source', 'a window or a screen of desktopCapturer.getSources', options.source);
  }
  if (window !== undefined) {
    return isText(window) || isWhole(window, 0, 2 ** 53) ? { window } : fail('window', 'the handle or the title of a window', window);
  }
  return options.region === undefined ? { monitor: monitor ?? 0 } : { region: region(options.region), monitor };
}

/** Where it goes: { directory, name }; without a name it is named as the module does. */
function place(options, ending) {
  const [file, directory] = [text(options, 'file'), text(options, 'directory')];
  if ((file === undefined) === (directory === undefined)) {
    throw new TypeError('file or directory must say where the recording goes, one of the two');
  }
  if (file === undefined) {
    return { directory: path.resolve(directory) };
  }
  const whole = path.resolve(file);
  if (path.extname(whole).toLowerCase() !== `.${ending}`) {
    fail('file', `a name that ends in .${ending}, which is what this records`, file);
  }
  return { directory: path.dirname(whole), name: path.basename(whole) };
}

/** What a recording's sound is encoded as. */
function audioCodec(options, recording) {
  const fitting = soundsOf(recording);
  const { audioCodec: wanted = fitting[0] } = options;
  if (!fitting.includes(wanted)) {
    const names = fitting.length > 1 ? `one of ${listed(fitting)}` : fitting[0];
    const by = recording.picture ? ` of ${recording.encoder}` : '';
    fail('audioCodec', `${names} in a .${containerOf(recording)}${by}`, wanted);
  }
  return wanted;
}

const SIGNAL = 'signal';
const RECORDING = [
  ...[...TARGETS, 'frameRate', 'encoder', 'bitrate', 'audioCodec', 'audioBitrate', 'microphone', 'speaker', 'file', 'directory'],
  ...['overwrite', 'stopAfter', 'segments', 'safeFile', 'cursor', 'border', 'scale', 'encoderOptions', 'logLevel', SIGNAL],
];

/**
 * @returns {object} what the process is asked for, as an object of JSON
 * @throws {TypeError} that names the option that is wrong
 */
function recordingOf(options) {
  if (options === null || typeof options !== 'object') {
    fail('options', 'an object', options);
  }
  refuseUnknown(options, RECORDING);
  const logLevel = options.logLevel ?? 'info';
  if (!LEVELS.includes(logLevel)) {
    fail('logLevel', `one of ${listed(LEVELS)}`, logLevel);
  }
  const shown = target(options);
  const sounds = { microphone: sound(options, 'microphone'), speaker: sound(options, 'speaker') };
  if (!shown && !sounds.microphone && !sounds.speaker) {
    throw new TypeError('picture can be false only with a microphone or a speaker');
  }
  const encoder = text(options, 'encoder') ?? 'libx264';
  const recording = { encoder, picture: shown !== undefined };
  return {
    target: shown,
    ...sounds,
    encoder,
    frameRate: whole(options, 'frameRate', 1, 120),
    bitrate: whole(options, 'bitrate', 100_000, 50_000_000),
    audioCodec: audioCodec(options, recording),
    audioBitrate: whole(options, 'audioBitrate', 1, 10_000_000),
    ...place(options, containerOf(recording)),
    overwrite: truth(options, 'overwrite', false),
    stopAfter: amounts(options, 'stopAfter', { seconds: [0.001, MOST_SECONDS], bytes: [1, 2 ** 53], freeBytes: [1, 2 ** 53] }),
    // Recordings are named by the second.
    segments: amounts(options, 'segments', { seconds: [1, MOST_SECONDS], bytes: [1, 2 ** 53] }),
    safeFile: truth(options, 'safeFile', true),
    cursor: truth(options, 'cursor', true),
    border: truth(options, 'border', true),
    scale: scale(options),
    encoderOptions: encoderOptions(options),
    logLevel,
  };
}

/** @throws {TypeError} when it is given and is none */
function signalOf(options) {
  const signal = options?.[SIGNAL];
  if (signal !== undefined && typeof signal?.addEventListener !== 'function') {
    fail(SIGNAL, 'an AbortSignal', signal);
  }
  return signal;
}

/** What is asked of the process for a screenshot. */
function screenshotOf(options = {}, file) {
  refuseUnknown(options, ['monitor', 'window', 'region', 'source', SIGNAL]);
  if (!isText(file)) {
    fail('file', 'the name of the PNG to write', file);
  }
  return { target: target(options), file: path.resolve(file) };
}

module.exports = { LEVELS, recordingOf, screenshotOf, signalOf, volumeOf };
