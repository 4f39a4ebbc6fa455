'use strict';

const assert = require('node:assert/strict');
const path = require('node:path');
const { test } = require('node:test');
const { targetOfSource } = require('../../lib/electron');
const { recordingOf, screenshotOf } = require('../../lib/options');
const { Recorder } = require('../../recorder');

const DIRECTORY = { directory: '.' };

test('what is left out has its default', () => {
  assert.deepEqual(JSON.parse(JSON.stringify(recordingOf(DIRECTORY))), {
    target: { monitor: 0 },
    encoder: 'libx264',
    directory: process.cwd(),
    overwrite: false,
    stopAfter: {},
    segments: {},
    safeFile: true,
    audioCodec: 'aac',
    cursor: true,
    border: true,
    encoderOptions: {},
    logLevel: 'info',
  });
});

test('a file is taken as a folder and a name, from the folder in which the application is', () => {
  const { directory, name } = recordingOf({ file: 'talks/one.MP4' });
  assert.deepEqual([directory, name], [path.resolve('talks'), 'one.MP4']);
  assert.equal(recordingOf({ file: 'a.webm', encoder: 'libvpx' }).name, 'a.webm');
  assert.equal(recordingOf({ file: 'a.mp3', picture: false, speaker: 'default' }).name, 'a.mp3');
});

test('options of the encoder become texts', () => {
  const given = { crf: 20.5, preset: 'fast', mbtree: false, aud: true };
  assert.deepEqual(recordingOf({ ...DIRECTORY, encoderOptions: given }).encoderOptions, { crf: '20.5', preset: 'fast', mbtree: '0', aud: '1' });
});

test('each target is taken', () => {
  const region = { left: -10, top: 20, width: 300, height: 200 };
  const targets = [
    [{ monitor: 1 }, { monitor: 1 }],
    [{ monitor: '\\\\.\\DISPLAY2' }, { monitor: '\\\\.\\DISPLAY2' }],
    [{ window: 65552 }, { window: 65552 }],
    [{ window: 'Notes' }, { window: 'Notes' }],
    [{ region }, { region, monitor: undefined }],
    [{ region, monitor: 1 }, { region, monitor: 1 }],
    [{ source: 'window:65552:0' }, { window: 65552 }],
    [{ source: { id: 'window:65552:1', name: 'Notes', display_id: '' } }, { window: 65552 }],
    [{ picture: false, microphone: 'default' }, undefined],
  ];
  targets.forEach(([options, target]) => assert.deepEqual(recordingOf({ ...DIRECTORY, ...options }).target, target));
});

test('sound has the codec that everybody plays in the container, or one that is asked for and fits', () => {
  const sound = { microphone: 'default' };
  const codecs = (options, ...wanted) => [undefined, ...wanted].map((audioCodec) => recordingOf({ ...DIRECTORY, ...sound, ...options, audioCodec }).audioCodec);
  assert.deepEqual(codecs({}, 'aac', 'mp3', 'opus'), ['aac', 'aac', 'mp3', 'opus']);
  assert.deepEqual(codecs({ encoder: 'prores' }, 'mp3'), ['aac', 'mp3']);
  assert.deepEqual(codecs({ encoder: 'libvpx-vp9' }, 'opus'), ['opus', 'opus']);
  assert.deepEqual(codecs({ encoder: 'mjpeg' }, 'mp3'), ['mp3', 'mp3']);
  assert.deepEqual(codecs({ picture: false }, 'mp3'), ['mp3', 'mp3']);
  assert.deepEqual(codecs({ encoder: 'mf_h264' }, 'aac'), ['aac', 'aac']);
  assert.deepEqual(codecs({ encoder: 'mf_h264', picture: false }, 'aac'), ['aac', 'aac']);
});

const WRONG = [
  [{ monitor: -1 }, /^monitor must be the index or the name of a monitor, and is -1$/],
  [{ window: {} }, /^window must be/],
  [{ window: '' }, /^window must be/],
  [{ region: { left: 0, top: 0, width: 10 } }, /^region must be an object with the whole numbers left, top, width and height/],
  [{ region: { left: 0, top: 0, width: 0, height: 10 } }, /^region must have a width/],
  [{ monitor: 0, window: 5 }, /^monitor and window cannot be given together$/],
  [{ picture: false, monitor: 1 }, /^monitor and picture cannot be given together$/],
  [{ source: 'tab:1' }, /^source must be a window or a screen of desktopCapturer\.getSources, and is "tab:1"$/],
  [{ source: 'screen:0:0' }, /^source must be/],
  [{ source: 5 }, /^source must be/],
  [{ picture: false }, /^picture can be false only with a microphone or a speaker$/],
  [{ picture: 'no' }, /^picture must be true or false, and is "no"$/],
  [{ frameRate: 0 }, /^frameRate must be a whole number from 1 to 120, and is 0$/],
  [{ frameRate: 29.97 }, /^frameRate /],
  [{ frameRate: '30' }, /^frameRate /],
  [{ bitrate: 99_999 }, /^bitrate must be a whole number from 100000 to 50000000/],
  [{ audioCodec: 'flac' }, /^audioCodec must be one of aac, mp3 and opus in a \.mp4 of libx264, and is "flac"$/],
  [{ audioCodec: null }, /^audioCodec must be one of aac, mp3 and opus in a \.mp4 of libx264, and is null$/],
  [{ audioCodec: 'opus', encoder: 'prores' }, /^audioCodec must be one of aac and mp3 in a \.mov of prores, and is "opus"$/],
  [{ audioCodec: 'aac', encoder: 'libvpx' }, /^audioCodec must be opus in a \.webm of libvpx, and is "aac"$/],
  [{ audioCodec: 'mp3', encoder: 'vp9_qsv' }, /^audioCodec must be opus in a \.webm/],
  [{ audioCodec: 'aac', encoder: 'mjpeg' }, /^audioCodec must be mp3 in a \.avi/],
  [{ audioCodec: 'mp3', encoder: 'mf_h264' }, /^audioCodec must be aac in a \.mp4 of mf_h264/],
  [{ audioCodec: 'aac', picture: false, speaker: 'default' }, /^audioCodec must be mp3 in a \.mp3, and is "aac"$/],
  [{ audioBitrate: -1 }, /^audioBitrate /],
  [{ encoder: '' }, /^encoder must be a text, and is ""$/],
  [{ microphone: { id: '' } }, /^microphone\.id must be a text, and is ""$/],
  [{ speaker: { id: 'x', volume: 11 } }, /^speaker\.volume must be a number from 0 to 10, and is 11$/],
  [{ speaker: { id: 'x', gain: 1 } }, /^speaker\.gain is no option; there are id and volume$/],
  [{ microphone: null }, /^microphone must be a text, or an object with id and volume, and is null$/],
  [{ speaker: 'a\0b' }, /^speaker /],
  [{ directory: undefined }, /^file or directory must say where the recording goes, one of the two$/],
  [{ file: 'a.mp4' }, /^file or directory /],
  [{ directory: undefined, file: 'a.mkv' }, /^file must be a name that ends in \.mp4, which is what this records, and is "a\.mkv"$/],
  [{ directory: undefined, file: 'a.mp4', encoder: 'libvpx-vp9' }, /^file must be a name that ends in \.webm/],
  [{ overwrite: 1 }, /^overwrite must be true or false/],
  [{ stopAfter: 60 }, /^stopAfter must be an object with seconds, bytes and freeBytes, and is 60$/],
  [{ stopAfter: { seconds: 0 } }, /^stopAfter\.seconds must be a number from/],
  [{ stopAfter: { seconds: NaN } }, /^stopAfter\.seconds /],
  [{ stopAfter: { minutes: 1 } }, /^stopAfter\.minutes is no option; there are seconds, bytes and freeBytes$/],
  [{ segments: { seconds: 0.5 } }, /^segments\.seconds must be a number from 1/],
  [{ cursor: 'no' }, /^cursor must be true or false, and is "no"$/],
  [{ scale: { width: 640 } }, /^scale must be an object with the whole numbers width and height, from 16 to 16384, and is an object$/],
  [{ scale: { width: 640, height: 8 } }, /^scale must be/],
  [{ scale: 0.5 }, /^scale must be .*, and is 0\.5$/],
  [{ scale: { width: 640, height: 360, ratio: 1 } }, /^scale\.ratio is no option; there are width and height$/],
  [{ scale: { width: 640, height: 360 }, encoder: 'mf_hevc' }, /^scale is for encoders of FFmpeg's, and mf_hevc is none$/],
  [{ encoderOptions: 'crf=20' }, /^encoderOptions must be an object with names and values of FFmpeg's, and is "crf=20"$/],
  [{ encoderOptions: { crf: NaN } }, /^encoderOptions\.crf must be a number, a text, true or false, and is NaN$/],
  [{ encoderOptions: { crf: [20] } }, /^encoderOptions\.crf must be/],
  [{ encoderOptions: { tune: 'a\0b' } }, /^encoderOptions\.tune must be/],
  [{ encoderOptions: { crf: 20 }, encoder: 'mf_h264' }, /^encoderOptions is for encoders of FFmpeg's, and mf_h264 is none$/],
  [{ border: 0 }, /^border must be true or false, and is 0$/],
  [{ logLevel: 'loud' }, /^logLevel must be one of debug, info, warning and error, and is "loud"$/],
  [{ signal: {} }, /^signal must be an AbortSignal, and is an object$/],
  [{ framerate: 30 }, /^framerate is no option; there are /],
];

for (const [options, message] of WRONG) {
  test(`${JSON.stringify(options)} is refused when the recorder is made`, () => {
    assert.throws(() => new Recorder({ ...DIRECTORY, ...options }), { name: 'TypeError', message });
  });
}

test("a screen of Electron's picker is found by its place in pixels", () => {
  // Two displays side by side, the second at 150 %: in points it begins where the first one ends.
  const displays = [
    { id: 11, bounds: { x: 0, y: 0, width: 1280, height: 720 } },
    { id: 2_528_732_444, bounds: { x: 1280, y: 0, width: 1280, height: 720 } },
  ];
  const screen = {
    getAllDisplays: () => displays,
    dipToScreenRect: (window, { x, y, width, height }) => (x === 1280 ? { x: 1282, y: 3, width: 1920, height: 1080 } : { x, y, width, height }),
  };
  const target = (id) => targetOfSource({ id: 'screen:1:0', display_id: id }, () => screen);
  assert.deepEqual([target('2528732444'), target('99')], [{ place: { left: 1282, top: 3 } }, undefined]);
});

test('what is no object at all is refused', () => {
  [undefined, null, 'file.mp4', 5].forEach((options) => assert.throws(() => new Recorder(options), TypeError));
});

test('a screenshot takes a target and a file', async () => {
  const file = path.resolve('a.png');
  assert.deepEqual(screenshotOf({ window: 5 }, 'a.png'), { target: { window: 5 }, file });
  assert.deepEqual(screenshotOf(undefined, 'a.png'), { target: { monitor: 0 }, file });
  await assert.rejects(Recorder.screenshot({ frameRate: 5 }, 'a.png'), { name: 'TypeError', message: /^frameRate is no option/ });
  await assert.rejects(Recorder.screenshot({}), { name: 'TypeError', message: /^file must be the name of the PNG to write/ });
});
