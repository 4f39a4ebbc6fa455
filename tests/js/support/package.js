'use strict';

const path = require('node:path');

/** The folder of the package under test: this tree, or where BRISOLTE_PACKAGE says that it is installed. */
const packageFolder = process.env.BRISOLTE_PACKAGE ?? path.join(__dirname, '..', '..', '..');

/** Every method of the class, in the order in which they are defined. */
const METHODS = [
  'startRecord',
  'stopRecord',
  'isCapturing',
  'getMonitors',
  'getWindows',
  'captureScreenshot',
  'setMode',
  'setMonitor',
  'setMonitorByName',
  'setWindow',
  'setRegion',
  'setFrameRate',
  'setOutputDir',
  'setEncoder',
  'setBitrate',
  'setCursorCapture',
  'setBorderHighlight',
  'setLogLevel',
  'getLogLevel',
  'getSaveFilePath',
  'getMicrophones',
  'getSpeakers',
  'setMicrophoneDevice',
  'setSpeakerDevice',
  'setAudioBitrate',
  'getSupportVideoCodec',
];

/** Loads the module with its log silent, for tests of what calls return. */
function loadSilently() {
  const { Brisolte } = require(packageFolder);
  new Brisolte().setLogLevel(5);
  return Brisolte;
}

module.exports = { METHODS, loadSilently, packageFolder };
