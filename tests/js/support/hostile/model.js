'use strict';

// What the class documents, as far as it can be told beforehand: the answer to each call of one instance.

const { LIMITS, PARAMETERS, SIDES_MISSING, int32 } = require('../documented');
const { badPaths } = require('./values');

const BAD_PATHS = badPaths.map(({ make }) => make());
const FILE = /\\Qorvex-\d{4}-\d\d-\d\d-\d\d-\d\d-\d\d\.(mp3|m4a|mp4|webm|mov|avi)$/;
const GOOD_ENCODERS = ['libx264', 'mpeg4', 'libvpx', 'mjpeg'];
const GOOD_REGIONS = ['a region', 'a region of odd size', 'an inherited region', 'a function with sides'];
const MEDIA_FOUNDATION = ['mf_h264', 'mf_hevc'];

/** What may come back: `fits` tells whether an outcome, { value } or { error }, is documented; `text` says it. */
const returns = (value) => ({ fits: (seen) => !seen.error && Object.is(seen.value, value), text: String(value) });
const throws = (message) => ({
  fits: ({ error }) => error?.constructor === Error && error.message === message,
  text: `the error "${message}"`,
});
const throwsAnything = { fits: ({ error }) => error instanceof Error, text: 'an error' };
const decides = {
  fits: ({ value, error }) => (error ? error.constructor === Error && error.message !== '' : typeof value === 'boolean'),
  text: 'true, false or an error with a text',
};
const refuses = {
  fits: (seen) => seen.error?.constructor === Error || seen.value === false,
  text: 'false or an error',
};
const lists = (...fields) => ({
  fits: ({ value }) => Array.isArray(value) && value.every((each) => Object.keys(each).join() === fields.join()),
  text: `a list of objects with ${fields}`,
});
const satisfies = (text, test) => ({ fits: ({ value, error }) => !error && test(value), text });

/** The kind of an argument as the methods tell it. */
function typeOf(words) {
  if (words.length === 0) {
    return 'none';
  }
  const type = typeof words[0];
  return type === 'function' ? 'object' : words[0] === null ? 'null' : type;
}

/** One instance, followed through its calls. */
class Model {
  /**
   * @param {object} desk what is there: monitor (a name), window (a handle), microphone and speaker (ids)
   * @param {{level?: number}} shared the log level, which all instances share; empty while other threads set it too
   */
  constructor(desk, shared) {
    this.desk = desk;
    this.shared = shared;
    this.capturing = false;
    this.file = '';
    this.settings = {
      ...{ mode: 0, monitor: 0, window: 0, region: '', encoder: 'libx264', folder: '' },
      ...{ microphone: '', speaker: '', audioBitrate: 128000 },
    };
  }

  /** What a call may give now. `value` is the argument's record, when there is one, and `words` are the arguments. */
  documented(method, value, words) {
    if (!(method in PARAMETERS)) {
      return this.withoutParameter(method);
    }
    const [type, text] = PARAMETERS[method];
    if (typeOf(words) !== type) {
      return throws(text);
    }
    const [least, most, rangeText] = LIMITS[method] ?? [];
    const number = int32(words[0]);
    if (rangeText && (number < least || number > most)) {
      return throws(rangeText);
    }
    return this.accepted(method, value, words[0]);
  }

  accepted(method, { asRegion = 'lacking' }, argument) {
    switch (method) {
      case 'setLogLevel':
        return returns(undefined);
      case 'captureScreenshot':
        return this.screenshot(argument);
      case 'setRegion':
        if (asRegion !== 'whole') {
          return asRegion === 'lacking' ? throws(SIDES_MISSING) : throwsAnything;
        }
    }
    if (this.capturing) {
      return returns(false);
    }
    switch (method) {
      case 'setMonitorByName':
        return returns(argument === this.desk.monitor);
      case 'setOutputDir':
        return this.desk.folders.includes(argument) ? returns(true) : refuses;
      case 'setAudioBitrate':
        return returns(int32(argument) > 0);
      default:
        return returns(true);
    }
  }

  screenshot(path) {
    const { mode, window } = this.settings;
    const possible = mode !== -1 && (mode !== 1 || window === this.desk.window) && !BAD_PATHS.includes(path);
    return possible ? decides : refuses;
  }

  withoutParameter(method) {
    switch (method) {
      case 'startRecord':
        return this.capturing ? returns(false) : this.start();
      case 'stopRecord':
      case 'isCapturing':
        return returns(this.capturing);
      case 'getSaveFilePath':
        return returns(this.file);
      case 'getLogLevel':
        return this.shared.level === undefined
          ? satisfies('0 to 5', (level) => [0, 1, 2, 3, 4, 5].includes(level))
          : returns(this.shared.level);
      case 'getMonitors':
        return lists('index', 'name', 'isPrimary', 'rect');
      case 'getWindows':
        return lists('handle', 'title', 'className', 'rect');
      case 'getSupportVideoCodec':
        return lists('id', 'name', 'description', 'isHardwareAccel', 'pixelFormats');
      default:
        return lists('id', 'name', 'isDefault', 'isActive');
    }
  }

  start() {
    const { encoder, mode, microphone, speaker, audioBitrate } = this.settings;
    const devices = [microphone, speaker].filter((id) => id !== '');
    const present = [microphone === this.desk.microphone, speaker === this.desk.speaker].filter(Boolean);
    if (MEDIA_FOUNDATION.includes(encoder)) {
      return decides;
    }
    if ((devices.length > 0 && present.length === 0) || (mode !== -1 && this.hopeless())) {
      return refuses;
    }
    const certain = devices.length === present.length && (devices.length === 0 || audioBitrate === 128000);
    const picture = mode === -1 || (GOOD_ENCODERS.includes(encoder) && this.hasTarget());
    // What VP8's container has no room for is another matter.
    return certain && picture && (devices.length === 0 || encoder !== 'libvpx') ? returns(true) : decides;
  }

  hopeless() {
    const { mode, window, monitor, encoder } = this.settings;
    return encoder === 'nonesuch' || (mode === 1 ? window !== this.desk.window : monitor !== 0);
  }

  hasTarget() {
    const { mode, region } = this.settings;
    return mode !== 2 || GOOD_REGIONS.includes(region);
  }

  /** Takes over what a call that answered as documented has changed. */
  follow(method, value, words, seen) {
    if (method === 'setLogLevel' && !seen.error && 'level' in this.shared) {
      this.shared.level = int32(words[0]);
    }
    if (method === 'stopRecord') {
      this.capturing = false;
    }
    if (method === 'startRecord') {
      this.capturing ||= seen.value === true;
    }
    if (seen.value === true && method.startsWith('set')) {
      this.set(method, value, words[0]);
    }
  }

  set(method, value, argument) {
    const { settings } = this;
    const changes = {
      setMode: () => ({ mode: int32(argument) }),
      setMonitor: () => ({ monitor: int32(argument), mode: 0 }),
      setMonitorByName: () => ({ monitor: 0, mode: 0 }),
      setWindow: () => ({ window: argument, mode: 1 }),
      setRegion: () => ({ region: value.name, mode: 2 }),
      setEncoder: () => ({ encoder: argument }),
      setOutputDir: () => ({ folder: argument }),
      setMicrophoneDevice: () => ({ microphone: argument }),
      setSpeakerDevice: () => ({ speaker: argument }),
      setAudioBitrate: () => ({ audioBitrate: int32(argument) }),
    };
    Object.assign(settings, changes[method]?.());
  }

  /** Where an attempt to record writes; the file's name holds the time and is the module's to choose. */
  chooses(file) {
    this.file = file;
    return FILE.test(file) && file.startsWith(`${this.settings.folder}\\Qorvex-`);
  }
}

module.exports = { Model };
