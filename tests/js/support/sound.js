'use strict';

// Sounds on the real endpoints, and what is heard of them in a recording.

const assert = require('node:assert/strict');
const { spawn } = require('node:child_process');
const fs = require('node:fs');
const { programs } = require('./desktop');
const { loadSilently } = require('./package');
const { scratchFile } = require('./scratch');
const { waitFor } = require('./wait');

const LEVEL = 0.5;
const IN_THE_ROOM = { endpoint: 'Room', frequency: 440, level: LEVEL };
const ON_THE_SPEAKER = { endpoint: 'Speaker', frequency: 1000, level: LEVEL };

const idOf = (devices, name) => devices.find((device) => device.name.includes(name)).id;

/** The setting that records the microphone, which hears what is played in the room. */
const microphone = () => ['setMicrophoneDevice', idOf(new (loadSilently())().getMicrophones(), 'Microphone')];

/** The setting that records the speaker. */
const speaker = () => ['setSpeakerDevice', idOf(new (loadSilently())().getSpeakers(), 'Speaker')];

/** A running tone.exe, which plays a sine wave on the render endpoint that has `endpoint` in its name. */
class Tone {
  constructor({ endpoint, frequency, level = 0.5 }) {
    this.ready = scratchFile('ready');
    this.control = scratchFile('control');
    this.commands = 0;
    this.errors = scratchFile('err');
    const errors = fs.openSync(this.errors, 'w');
    const words = [endpoint, frequency, level, this.ready, this.control].map(String);
    this.process = spawn(programs.tone, words, { stdio: ['ignore', errors, errors] });
    fs.closeSync(errors);
    this.ended = new Promise((resolve) => {
      this.process.on('error', resolve);
      this.process.on('exit', resolve);
    });
    this.ended.then((how) => (this.end = how));
  }

  /** Waits until it has carried out all commands. */
  idle() {
    return waitFor('the tone', () => {
      if (this.end !== undefined) {
        throw new Error(`tone.exe ended: ${this.end} ${fs.readFileSync(this.errors, 'utf8')}`);
      }
      return fs.existsSync(this.ready) && fs.readFileSync(this.ready, 'utf8') === String(this.commands);
    });
  }

  /** Plays the tone for so many seconds from now on. */
  play(seconds) {
    fs.appendFileSync(this.control, `play ${seconds}\n`);
    this.commands += 1;
    return this.idle();
  }

  /** Ends the tone; safe to call again. */
  async close() {
    fs.appendFileSync(this.control, 'close\n');
    await this.ended;
  }
}

/** Opens an endpoint for tones, silent at first, for the time of a test. */
async function openTone(t, options) {
  const tone = new Tone(options);
  t.after(() => tone.close());
  await tone.idle();
  return tone;
}

/** Plays a tone for the time of a test. */
async function playTone(t, options) {
  const tone = await openTone(t, options);
  await tone.play(300);
}

/** How loud a frequency is in a signal: the amplitude of its sine wave. */
function strengthAt(frequency, samples, rate) {
  let real = 0;
  let imaginary = 0;
  samples.forEach((sample, i) => {
    const angle = (2 * Math.PI * frequency * i) / rate;
    real += sample * Math.cos(angle);
    imaginary += sample * Math.sin(angle);
  });
  return (2 * Math.hypot(real, imaginary)) / samples.length;
}

/** A sound cut into pieces of so many samples. */
const pieces = (samples, size) =>
  Array.from({ length: Math.floor(samples.length / size) }, (_, i) => samples.subarray(i * size, (i + 1) * size));

/** Asserts that a sound is this tone at its level, and neither of the other. */
function assertTone({ samples, rate }, { frequency }, other) {
  const inside = samples.subarray(Math.floor(samples.length * 0.2), Math.floor(samples.length * 0.9));
  // In pieces, because a player that gets no time on a busy machine leaves holes in its tone, and the edges of a hole have
  // something of every frequency.
  const parts = pieces(inside, rate / 20);
  const strengthsOf = (wanted) => parts.map((part) => strengthAt(wanted, part, rate)).sort((a, b) => b - a);
  // A machine may be busy for longer than half of a recording.
  const decibels = 20 * Math.log10(strengthsOf(frequency)[Math.floor(parts.length / 4)] / LEVEL);
  assert.ok(Math.abs(decibels) <= 1, `${frequency} Hz is off by ${decibels} dB`);
  const strange = strengthsOf(other.frequency)[Math.floor(parts.length / 2)] / LEVEL;
  assert.ok(strange < 0.01, `${other.frequency} Hz is heard at ${strange} of its level`);
}

module.exports = {
  IN_THE_ROOM,
  LEVEL,
  ON_THE_SPEAKER,
  assertTone,
  microphone,
  openTone,
  pieces,
  playTone,
  speaker,
  strengthAt,
};
