'use strict';

// What the class promises about the arguments of its methods.

/** For each method with a parameter its JavaScript type and the text of the error for any other. */
const PARAMETERS = {
  captureScreenshot: ['string', 'Capturing screenshot requires a file path parameter'],
  setMode: ['number', 'Setting capture mode requires a number parameter'],
  setMonitor: ['number', 'Setting target monitor requires a number parameter'],
  setMonitorByName: ['string', 'Setting target monitor requires a string parameter (monitor name)'],
  setWindow: ['number', 'Setting target window requires a number parameter (window handle)'],
  setRegion: ['object', 'Setting capture region requires an object parameter {left, top, width, height}'],
  setFrameRate: ['number', 'Setting frame rate requires a number parameter'],
  setOutputDir: ['string', 'Setting output file path requires a string parameter'],
  setEncoder: ['string', 'Setting output file path requires a string parameter'],
  setBitrate: ['number', 'Setting bitrate requires a number parameter'],
  setCursorCapture: ['boolean', 'Setting cursor capture requires a boolean parameter'],
  setBorderHighlight: ['boolean', 'Setting border highlight requires a boolean parameter'],
  setLogLevel: ['number', 'Setting log level requires a number parameter'],
  setMicrophoneDevice: ['string', 'Setting microphone device requires a string parameter (device ID)'],
  setSpeakerDevice: ['string', 'Setting speaker device requires a string parameter (device ID)'],
  setAudioBitrate: ['number', 'Setting audio bitrate requires a number parameter'],
};

/** For each method with a range its ends and the text of the error beyond them. */
const LIMITS = {
  setMode: [-1, 2, 'Invalid capture mode. Valid values: -1 (none), 0 (screen), 1 (window), 2 (region)'],
  setFrameRate: [1, 120, 'Frame rate must be in the range 1-120'],
  setBitrate: [100000, 50000000, 'Bitrate must be in the range 100Kbps-50Mbps'],
  setLogLevel: [
    0,
    5,
    'Invalid log level. Valid values: 0 (TRACE), 1 (DEBUG), 2 (INFO), 3 (WARN), 4 (ERROR), 5 (FATAL)',
  ],
};

const SIDES = ['left', 'top', 'width', 'height'];
const SIDES_MISSING = 'Region object must contain left, top, width, height properties';

/** A number as the methods read it: 32 bits with a sign. */
const int32 = (number) => (Number.isFinite(number) ? number | 0 : 0);

module.exports = { LIMITS, PARAMETERS, SIDES, SIDES_MISSING, int32 };
