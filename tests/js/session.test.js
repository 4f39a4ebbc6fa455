'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { assertRecording } = require('./support/check');
const { openPattern } = require('./support/desktop');
const { record } = require('./support/recording');
const { scenario } = require('./support/scenario');
const { scratchFolder } = require('./support/scratch');

const SMALL = { x: 30, y: 30, width: 320, height: 192 };

test('a recording logs its steps in their order', async (t) => {
  const window = await openPattern(t, { title: 'Steps', ...SMALL });
  const dir = scratchFolder();
  const { log, file } = await record({ window, dir, pictures: 30, settings: [['setWindow', window.handle]] });
  const inOrder = [
    `Output directory set to: ${dir}`,
    'Using MP4 container for encoder: libx264',
    `Output file path: ${file}`,
    `FFmpegEncoder: Initialization with configuration: ${file}`,
    `Creating output directory: ${dir}`,
    'Output directory already exists',
    'Existing output file removed',
    `FFmpegEncoder: Creating format context, output file: ${file}`,
    'FFmpegEncoder: Format context created successfully',
    'FFmpegEncoder: Initialization successful',
    'Attempting to create D3D11 device with driver type: 1',
    'Capture dimensions set to: 320x192',
    'Creating frame pool with resolution: 320x192',
    'Frame pool and capture session initialized successfully',
    'FFmpegEncoder: Successfully initialized libx264 with pixel format: nv12',
    'FFmpegEncoder: Writing file header with 1 streams',
    'FFmpegEncoder: Stream #0 is video codec_id: 27',
    'FFmpegEncoder: File header written successfully',
    'Audio capture starting with timestamp: ',
    '+++++++ Starting videoCapture +++++++',
    'First Video frame arrived at: ',
    'Video Capture stopped,trigger count ',
    'FFmpegEncoder: Trailer written successfully, output file closed',
    'FFmpegEncoder: Writer thread has stopped',
    'FFmpegEncoder: Destructor started',
    'FFmpegEncoder: Destructor completed',
  ];
  let at = 0;
  for (const text of inOrder) {
    const found = log.text.indexOf(text, at);
    assert.notEqual(found, -1, `"${text}" is missing or too early in:\n${log.text}`);
    at = found + text.length;
  }
  assert.deepEqual([...log.errors, ...log.messages('WARNING')], []);
});

test('a file is named after the local time of its start', async (t) => {
  const window = await openPattern(t, { title: 'Named', ...SMALL });
  for (const ending of ['', '\\']) {
    const dir = scratchFolder() + ending;
    const second = () => Math.floor(Date.now() / 1000) * 1000;
    const begun = second();
    const { file } = await record({ window, dir, pictures: 10, settings: [['setWindow', window.handle]] });
    assert.ok(file.startsWith(`${dir}\\`), file);
    const name = file.slice(dir.length + 1);
    const [, ...parts] = name.match(/^Qorvex-(\d{4})-(\d\d)-(\d\d)-(\d\d)-(\d\d)-(\d\d)\.mp4$/);
    const [year, month, ...rest] = parts.map(Number);
    const named = new Date(year, month - 1, ...rest).getTime();
    assert.ok(named >= begun && named <= second(), name);
    assert.deepEqual(fs.readdirSync(dir), [name]);
  }
});

test('directories in any script are recorded into', async (t) => {
  const window = await openPattern(t, { title: 'Scripts', ...SMALL });
  for (const name of ['Ümläut ß', '漢字 かな', 'кириллица', 'emoji 🎬', "it's 100% & more"]) {
    const dir = path.join(scratchFolder(), name);
    fs.mkdirSync(dir);
    const recording = await record({ window, dir, pictures: 20, settings: [['setWindow', window.handle]] });
    assert.equal(path.dirname(recording.file), dir);
    assertRecording(recording, { picture: window.picture, exact: false });
  }
});

test('everything is refused while recording, and nothing changes', async (t) => {
  const window = await openPattern(t, { title: 'Refusals', ...SMALL });
  const [dir, other] = [scratchFolder(), scratchFolder()];
  const { value, log } = await scenario(
    async ({ Brisolte, log: live, paintedMore }, given) => {
      const capture = new Brisolte();
      const [{ name }] = capture.getMonitors();
      capture.setOutputDir(given.dir);
      capture.setWindow(given.handle);
      capture.startRecord();
      await live.line('First Video frame arrived at: ');
      const file = capture.getSaveFilePath();
      const mark = live.mark();
      const refused = {
        startRecord: capture.startRecord(),
        setMode: capture.setMode(-1),
        setMonitor: capture.setMonitor(0),
        setMonitorByName: capture.setMonitorByName(name),
        setWindow: capture.setWindow(0),
        setRegion: capture.setRegion({ left: 0, top: 0, width: 64, height: 64 }),
        setFrameRate: capture.setFrameRate(1),
        setOutputDir: capture.setOutputDir(given.other),
        setEncoder: capture.setEncoder('mjpeg'),
        setBitrate: capture.setBitrate(100000),
        setCursorCapture: capture.setCursorCapture(false),
        setBorderHighlight: capture.setBorderHighlight(true),
        setMicrophoneDevice: capture.setMicrophoneDevice('nonesuch'),
        setSpeakerDevice: capture.setSpeakerDevice('nonesuch'),
        setAudioBitrate: capture.setAudioBitrate(64000),
      };
      const { errors } = live.since(mark);
      // Wrong arguments are told before the state is looked at; the log level is not part of the settings.
      const thrown = [() => capture.setMode(3), () => capture.setRegion({}), () => capture.setWindow('x')].map((call) => {
        try {
          return call();
        } catch (error) {
          return error.message;
        }
      });
      capture.setLogLevel(1);
      const unchanged = [capture.isCapturing(), capture.getSaveFilePath() === file, capture.getLogLevel()];
      const lists = [capture.getMonitors().length > 0, capture.getWindows().length > 0];
      await paintedMore(given.progress, 30);
      const stops = [capture.stopRecord(), capture.stopRecord(), capture.isCapturing()];
      const again = [capture.startRecord(), capture.stopRecord(), capture.getSaveFilePath()];
      return { refused, errors, thrown, unchanged, lists, stops, file, again };
    },
    { dir, other, handle: window.handle, progress: window.progress },
  );
  assert.deepEqual(Object.entries(value.refused).filter(([, answer]) => answer !== false), []);
  assert.deepEqual(value.errors, [
    'Recording is already in progress',
    'Cannot set output directory while capturing',
    'Cannot set microphone device while capturing',
    'Cannot set speaker device while capturing',
    'Cannot set audio bitrate while capturing',
  ]);
  assert.deepEqual(value.thrown, [
    'Invalid capture mode. Valid values: -1 (none), 0 (screen), 1 (window), 2 (region)',
    'Region object must contain left, top, width, height properties',
    'Setting target window requires a number parameter (window handle)',
  ]);
  assert.deepEqual(value.unchanged, [true, true, 1]);
  assert.deepEqual(value.lists, [true, true]);
  assert.deepEqual(value.stops, [true, false, false]);

  const [started, stopped, second] = value.again;
  assert.deepEqual([started, stopped], [true, true]);
  assert.deepEqual([path.dirname(second), path.extname(second)], [dir, '.mp4']);
  assert.equal(log.text.match(/Capture dimensions set to: 320x192/g).length, 2);
  assert.equal(log.text.match(/, frame rate: ?30/g).length, 2);
});

test('stopping when nothing runs returns false and logs nothing', async () => {
  const { value, log } = await scenario(({ Brisolte }) => {
    const capture = new Brisolte();
    return [capture.stopRecord(), capture.stopRecord(), capture.isCapturing(), capture.getSaveFilePath()];
  });
  assert.deepEqual(value, [false, false, false, '']);
  assert.deepEqual(log.entries, []);
});

test('a recording without any source starts and stops', async () => {
  const { value, log } = await scenario(
    ({ Brisolte }, { dir }) => {
      const capture = new Brisolte();
      capture.setOutputDir(dir);
      capture.setMode(-1);
      const answers = [1, 2].flatMap(() => [capture.startRecord(), capture.isCapturing(), capture.stopRecord()]);
      return { answers, file: capture.getSaveFilePath(), after: capture.isCapturing() };
    },
    { dir: scratchFolder() },
  );
  assert.deepEqual(value.answers, [true, true, true, true, true, true]);
  assert.equal(value.after, false);
  assert.equal(path.extname(value.file), '.mp3');
  assert.match(log.text, /\[ERROR\] FFmpegEncoder: Failed to write file header: /);
});
