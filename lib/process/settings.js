'use strict';

// What is asked for, as settings of an instance of the module.

const { RecorderError } = require('../errors');
const { listOf } = require('./lists');

const LEVELS = { debug: 1, info: 2, warning: 3, error: 4, nothing: 5 };

function set(instance, method, ...words) {
  if (instance[method](...words) !== true) {
    throw new RecorderError('ERR_RECORDER_START', 'The recording did not start');
  }
}

const missing = (what, there) =>
  new RecorderError('ERR_RECORDER_NOT_FOUND', `There is no ${what}; there ${there.length === 0 ? 'is none' : `are: ${there.join(', ')}`}`);

/** @param {object} [target] { monitor }, { window }, { region, monitor }, { place }; nothing is shown when it is left out */
function chooseTarget(instance, target) {
  if (!target) {
    set(instance, 'setMode', -1);
  } else if (target.window !== undefined) {
    set(instance, 'setWindow', handleOf(instance, target.window));
  } else if (target.region) {
    set(instance, 'setMonitor', monitorOf(instance, target.monitor ?? nearestTo(instance, target.region)));
    set(instance, 'setRegion', target.region);
  } else {
    set(instance, 'setMonitor', target.place ? monitorAt(instance, target.place) : monitorOf(instance, target.monitor));
  }
}

function monitorAt(instance, { left, top }) {
  const monitors = listOf(instance, 'monitors');
  // Whoever counted it from points may have rounded.
  const found = monitors.find(({ rect }) => Math.abs(rect.left - left) <= 1 && Math.abs(rect.top - top) <= 1);
  if (!found) {
    throw missing(`monitor at ${left}, ${top}`, monitors.map(({ rect }) => `${rect.left}, ${rect.top}`));
  }
  return found.index;
}

function monitorOf(instance, wanted) {
  if (typeof wanted === 'number') {
    return wanted;
  }
  const monitors = listOf(instance, 'monitors');
  const found = monitors.find(({ name }) => name === wanted);
  if (!found) {
    throw missing(`monitor ${wanted}`, monitors.map(({ name }) => name));
  }
  return found.index;
}

/** The monitor of which a region has most: what lies on others is not recorded. */
function nearestTo(instance, { left, top, width, height }) {
  const common = (from, to, otherFrom, otherTo) => Math.max(Math.min(to, otherTo) - Math.max(from, otherFrom), 0);
  const share = ({ rect }) => common(left, left + width, rect.left, rect.right) * common(top, top + height, rect.top, rect.bottom);
  const [first] = listOf(instance, 'monitors').sort((a, b) => share(b) - share(a));
  return first?.index ?? 0;
}

function handleOf(instance, wanted) {
  if (typeof wanted === 'number') {
    return wanted;
  }
  const windows = listOf(instance, 'windows');
  const found = windows.find(({ title }) => title === wanted);
  if (!found) {
    throw missing(`window with the title "${wanted}"`, windows.map(({ title }) => `"${title}"`));
  }
  return found.handle;
}

/** @param {string} wanted an id, or `default` */
function deviceOf(instance, kind, wanted) {
  const devices = listOf(instance, `${kind}s`);
  const found = wanted === 'default' ? (devices.find(({ isDefault }) => isDefault) ?? devices[0]) : devices.find(({ id }) => id === wanted);
  if (!found) {
    const what = wanted === 'default' ? kind : `${kind} with the id "${wanted}"`;
    throw missing(what, devices.map(({ id, name }) => `"${id}" (${name})`));
  }
  return found.id;
}

/** Sets all that a recording is asked to be. */
function apply(instance, wanted) {
  const { target, microphone, speaker, encoder, frameRate, bitrate, audioCodec, audioBitrate, directory, safeFile } = wanted;
  const { cursor, border, scale, encoderOptions } = wanted;
  chooseTarget(instance, target);
  set(instance, 'setEncoder', encoder);
  set(instance, 'setOutputDir', directory);
  set(instance, 'setPlayableThroughout', safeFile);
  set(instance, 'setAudioCodec', audioCodec, audioBitrate);
  set(instance, 'setShowsCursor', cursor);
  set(instance, 'setShowsBorder', border);
  set(instance, 'setEncoderOptions', encoderOptions);
  set(instance, 'setMicrophoneDevice', microphone ? deviceOf(instance, 'microphone', microphone.id) : '');
  set(instance, 'setSpeakerDevice', speaker ? deviceOf(instance, 'speaker', speaker.id) : '');
  const given = { setFrameRate: frameRate, setBitrate: bitrate, setAudioBitrate: audioBitrate, setLargestPicture: scale };
  Object.entries(given)
    .filter(([, value]) => value !== undefined)
    .forEach(([method, value]) => set(instance, method, value));
}

module.exports = { apply, chooseTarget, LEVELS };
