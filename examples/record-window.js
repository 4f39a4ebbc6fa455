// Records a window for five seconds into the current folder: node record-window.js [PART OF ITS TITLE]

'use strict';

const { Brisolte } = require('brisolte');

const part = process.argv[2] ?? '';
const recorder = new Brisolte();

// Front to back: without a title this is the frontmost of them. The shell's own, which it keeps out of sight, may be among them.
const window = recorder.getWindows().find(({ title }) => title.includes(part));
if (!window) {
  throw new Error(`no window has "${part}" in its title`);
}
recorder.setWindow(window.handle);
recorder.setOutputDir(process.cwd());

if (!recorder.startRecord()) {
  throw new Error('the recording did not start; the log lines above say why');
}
setTimeout(() => {
  recorder.stopRecord();
  console.log(`"${window.title}" is in ${recorder.getSaveFilePath()}`);
}, 5000);
