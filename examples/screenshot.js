// Takes a picture of the first monitor, or of a window: node screenshot.js FILE.png [PART OF THE WINDOW'S TITLE]

'use strict';

const path = require('node:path');
const { Brisolte } = require('brisolte');

const [file = 'screenshot.png', part] = process.argv.slice(2);
const recorder = new Brisolte();

if (part === undefined) {
  recorder.setMonitor(0);
} else {
  const window = recorder.getWindows().find(({ title }) => title.includes(part));
  if (!window) {
    throw new Error(`no window has "${part}" in its title`);
  }
  recorder.setWindow(window.handle);
}

// The system has a fifth of a second to deliver the picture; on a busy machine that can be too short once.
const take = () => recorder.captureScreenshot(path.resolve(file));
if (!take() && !take()) {
  throw new Error('the screenshot failed; the log lines above say why');
}
console.log(path.resolve(file));
