// A small command-line recorder: node recorder.js --help

'use strict';

const fs = require('node:fs');
const path = require('node:path');
const { parseArgs } = require('node:util');
const { Brisolte } = require('brisolte');

const USAGE = `usage: node recorder.js [options]
  --monitor N          records this monitor, the first one (0) unless said otherwise
  --window TITLE       records the window with exactly this title
  --region L,T,W,H     records a region: left, top, width, height
  --fps N              frame rate, 30 unless said otherwise
  --encoder NAME       video encoder, libx264 unless said otherwise
  --bitrate N          bits per second of the picture, 5000000 unless said otherwise
  --audio              records the default microphone and speaker as well
  --seconds N          length of the recording; without it, until Ctrl+C
  --screenshot FILE    takes a picture of the same after the recording
  --out DIR            where the recording goes, the current folder unless said otherwise
  --verbose            shows the module's own log`;

const OPTIONS = {
  monitor: { type: 'string', default: '0' },
  window: { type: 'string' },
  region: { type: 'string' },
  fps: { type: 'string', default: '30' },
  encoder: { type: 'string', default: 'libx264' },
  bitrate: { type: 'string', default: '5000000' },
  audio: { type: 'boolean', default: false },
  seconds: { type: 'string', default: 'Infinity' },
  screenshot: { type: 'string' },
  out: { type: 'string', default: process.cwd() },
  verbose: { type: 'boolean', default: false },
  help: { type: 'boolean', default: false },
};

function chooseTarget(recorder, { monitor, window, region }) {
  recorder.setMonitor(Number(monitor));
  if (region !== undefined) {
    const numbers = region.split(',').map(Number);
    if (numbers.length !== 4 || !numbers.every(Number.isInteger)) {
      throw new Error(`--region ${region} is not four whole numbers L,T,W,H`);
    }
    const [left, top, width, height] = numbers;
    recorder.setRegion({ left, top, width, height });
  } else if (window !== undefined) {
    const windows = recorder.getWindows();
    const found = windows.find(({ title }) => title === window);
    if (!found) {
      throw new Error(`no window has the title "${window}"; there are: ${windows.map(({ title }) => `"${title}"`).join(', ')}`);
    }
    recorder.setWindow(found.handle);
  }
}

function chooseSound(recorder) {
  const idOf = (devices, what) => {
    const device = devices.find(({ isDefault }) => isDefault) ?? devices[0];
    if (!device) {
      throw new Error(`there is no ${what}`);
    }
    return device.id;
  };
  recorder.setMicrophoneDevice(idOf(recorder.getMicrophones(), 'microphone'));
  recorder.setSpeakerDevice(idOf(recorder.getSpeakers(), 'speaker'));
}

/** One line that stays in its place on a terminal; a line a second where output goes to a file. */
function showStatus(file, elapsed, last) {
  const bytes = fs.statSync(file, { throwIfNoEntry: false })?.size ?? 0;
  const line = `recording: ${elapsed.toFixed(0)} s, ${Math.round(bytes / 1024)} kB written`;
  process.stdout.write(process.stdout.isTTY ? `\r${line}${last ? '\n' : ''}` : `${line}\n`);
}

/** Waits until the time is over or somebody presses Ctrl+C, showing how far the recording is. */
function recordUntilDone(file, seconds) {
  return new Promise((resolve) => {
    const startedAt = Date.now();
    const elapsed = () => (Date.now() - startedAt) / 1000;
    const status = setInterval(() => showStatus(file, elapsed(), false), 1000);
    const finish = () => {
      clearInterval(status);
      clearTimeout(end);
      process.removeListener('SIGINT', finish);
      showStatus(file, elapsed(), true);
      resolve();
    };
    const end = seconds === Infinity ? undefined : setTimeout(finish, 1000 * seconds);
    process.once('SIGINT', finish);
  });
}

// The system has a fifth of a second to deliver the picture, which a busy machine may not make at once.
function takeScreenshot(recorder, file) {
  for (let attempt = 0; attempt < 10; attempt += 1) {
    if (recorder.captureScreenshot(path.resolve(file))) {
      return;
    }
  }
  throw new Error('the screenshot failed; the lines above say why');
}

async function main() {
  const { values } = parseArgs({ options: OPTIONS });
  if (values.help) {
    console.log(USAGE);
    return;
  }
  const seconds = Number(values.seconds);
  if (!(seconds > 0)) {
    throw new Error(`--seconds ${values.seconds} is not a length of time`);
  }
  const recorder = new Brisolte();
  recorder.setLogLevel(values.verbose ? 1 : 3);
  chooseTarget(recorder, values);
  recorder.setFrameRate(Number(values.fps));
  recorder.setEncoder(values.encoder);
  recorder.setBitrate(Number(values.bitrate));
  if (values.audio) {
    chooseSound(recorder);
  }
  if (!recorder.setOutputDir(path.resolve(values.out))) {
    throw new Error(`${values.out} is not a directory`);
  }
  if (!recorder.startRecord()) {
    throw new Error('the recording did not start; the lines above say why');
  }
  await recordUntilDone(recorder.getSaveFilePath(), seconds);
  recorder.stopRecord();
  if (values.screenshot) {
    takeScreenshot(recorder, values.screenshot);
  }
  console.log(recorder.getSaveFilePath());
}

main().catch((error) => {
  console.error(error.message);
  process.exitCode = 1;
});
