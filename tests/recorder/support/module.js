'use strict';

// Stands in for the module in a recorder's process: it records bytes, and says what the module would. The name of the encoder
// says what else happens.

const fs = require('node:fs');
const path = require('node:path');

const SLOW_MS = 4000;

let level = 2;
let starts = 0;
const two = (number) => String(number).padStart(2, '0');

function clock(separators) {
  const now = new Date();
  const parts = [now.getMonth() + 1, now.getDate(), now.getHours(), now.getMinutes(), now.getSeconds()].map(two);
  return [now.getFullYear(), ...parts].reduce((text, part, i) => text + separators[i - 1] + part);
}

function write(stream, text) {
  try {
    fs.writeSync(stream, text);
  } catch {
    // Nobody reads any more; nor does the module mind.
  }
}

function log(tag, text) {
  const weight = { DEBUG: 2, INFO: 3, WARNING: 4, ERROR: 5 }[tag];
  if (level < weight) {
    write(1, `${clock(['-', '-', ' ', ':', ':'])} [${tag}] ${text}\n`);
  }
}

const hang = (milliseconds) => Atomics.wait(new Int32Array(new SharedArrayBuffer(4)), 0, 0, milliseconds);
const die = () => process.kill(process.pid, 'SIGKILL');

const AT_START = {
  refuses: () => {
    log('ERROR', 'Encoder refuses not found!');
    log('ERROR', 'Failed to initialize encoder');
    return false;
  },
  throws: () => {
    log('ERROR', 'Failed to start video capture');
    throw new Error('resource deadlock would occur');
  },
  headless: () => {
    log('ERROR', 'FFmpegEncoder: Failed to write file header: Invalid argument');
    log('ERROR', 'FFmpegEncoder: A webm file cannot hold mp3 sound; record without sound or choose another video encoder');
    return true;
  },
  empty: () => true,
  dies: die,
  hangs: () => hang(),
};
const WHILE_RECORDING = {
  diesLater: () => setTimeout(die, 300),
  hangsLater: () => setTimeout(() => hang(), 300),
  full: (tell) =>
    setTimeout(() => {
      log('WARNING', 'FFmpegEncoder: The disk is nearly full, the recording ends here');
      tell('diskFull');
    }, 300),
  stays: (tell) => ['cursorStays', 'borderStays', 'cursorStays'].forEach((event) => setTimeout(tell, 20, event)),
  // Fills a pipe in some seconds.
  floods: () => setInterval(() => log('ERROR', 'x'.repeat(1500)), 100),
};
/** A box of an MP4. */
function box(name, bytes = 0) {
  const data = Buffer.alloc(8 + bytes);
  data.writeUInt32BE(data.length);
  data.write(name, 4);
  return data;
}

class Brisolte {
  #settings = {};
  #file = '';
  #writer;
  #tell = () => {};
  #factors = {};

  setLogLevel(wanted) {
    level = wanted;
  }

  #set(name, value) {
    this.#settings[name] = value;
    return true;
  }

  setMode = (mode) => this.#set('mode', mode);
  setMonitor = (monitor) => this.#set('monitor', monitor);
  setWindow = (window) => this.#set('window', window);
  setRegion = (region) => this.#set('region', region);
  setFrameRate = (rate) => this.#set('frameRate', rate);
  setEncoder = (encoder) => this.#set('encoder', encoder);
  setBitrate = (rate) => this.#set('bitrate', rate);
  setAudioBitrate = (rate) => this.#set('audioBitrate', rate);
  setMicrophoneDevice = (id) => this.#set('microphone', id);
  setAudioCodec = (codec, rate) => this.#set('sound', [codec, rate ?? null]);
  setPlayableThroughout = (throughout) => this.#set('throughout', throughout);
  setShowsCursor = (shows) => this.#set('cursor', shows);
  setShowsBorder = (shows) => this.#set('border', shows);
  setLargestPicture = (size) => this.#set('largest', size);
  setEncoderOptions = (options) => this.#set('encoderOptions', options);
  setSpeakerDevice = (id) => this.#set('speaker', id);

  setVolume = (sound, volume) => this.#adjust(sound, { volume });
  setMuted = (sound, muted) => this.#adjust(sound, { muted });

  #adjust(sound, change) {
    log('INFO', `adjusted: ${JSON.stringify({ sound, ...change })}`);
    this.#factors[sound] = { ...this.#factors[sound], ...change };
    return true;
  }

  takeLevels() {
    log('INFO', 'levels taken');
    const level = ({ volume = 1, muted = false } = {}) => (muted ? 0 : volume / 10);
    return { microphone: level(this.#factors.microphone), speaker: level(this.#factors.speaker) };
  }

  onEvent(listener) {
    this.#tell = listener;
    return true;
  }

  startRecord() {
    const { encoder, directory } = this.#settings;
    log('INFO', `settings: ${JSON.stringify(this.#settings)}`);
    const ending = { libvpx: 'webm', mjpeg: 'avi', empty: 'avi' }[encoder] ?? 'mp4';
    this.#file = path.join(directory, `Qorvex-${clock(['-', '-', '-', '-', '-'])}.${ending}`);
    fs.writeFileSync(this.#file, '');
    starts += 1;
    if (encoder === 'slowAtStart' || (encoder === 'slow' && starts > 1)) {
      hang(SLOW_MS);
    }
    if (encoder in AT_START) {
      return AT_START[encoder]();
    }
    fs.appendFileSync(this.#file, box('free'));
    this.#write();
    write(2, '[libx264 @ 0x55] profile High\n');
    WHILE_RECORDING[encoder]?.(this.#tell);
    return true;
  }

  #write() {
    this.#writer = setInterval(() => fs.appendFileSync(this.#file, box('mdat', 992)), 20);
  }

  pauseRecord() {
    clearInterval(this.#writer);
    return true;
  }

  resumeRecord() {
    this.#write();
    return true;
  }

  stopRecord() {
    clearInterval(this.#writer);
    if (this.#settings.encoder === 'hangsAtStop') {
      hang();
    }
    if (this.#settings.encoder === 'slow') {
      hang(SLOW_MS);
    }
    if (['breaks', 'empty'].includes(this.#settings.encoder)) {
      log('ERROR', 'FFmpegEncoder: Failed to write trailer!!!!!');
      return true;
    }
    log('INFO', 'FFmpegEncoder: Trailer written successfully, output file closed');
    fs.appendFileSync(this.#file, box('moov'));
    return true;
  }

  getSaveFilePath() {
    return this.#file;
  }

  captureScreenshot(file) {
    if (this.#settings.monitor === 9) {
      log('ERROR', 'Invalid monitor index');
      return false;
    }
    fs.writeFileSync(file, 'PNG');
    return true;
  }

  setOutputDir(directory) {
    if (!fs.existsSync(directory)) {
      log('ERROR', `Invalid or non-existent output directory: ${directory}`);
      return false;
    }
    return this.#set('directory', directory);
  }

  getMonitors() {
    return [
      { index: 0, name: '\\\\.\\DISPLAY1', isPrimary: true, rect: { left: 0, top: 0, right: 1280, bottom: 720 } },
      { index: 1, name: '\\\\.\\DISPLAY2', isPrimary: false, rect: { left: 1280, top: 0, right: 3200, bottom: 1080 } },
    ];
  }

  getWindows() {
    return [{ handle: 42, title: 'Notes', className: 'Notes', rect: { left: 0, top: 0, right: 100, bottom: 100 } }];
  }

  getMicrophones() {
    return [
      { id: 'mic-1', name: 'Line in', isDefault: false, isActive: true },
      { id: 'mic-2', name: 'Headset', isDefault: true, isActive: true },
    ];
  }

  getSpeakers() {
    return [];
  }

  getSupportVideoCodec() {
    throw new Error('Error getting supported video codecs: out of memory');
  }
}

module.exports = { Brisolte };
