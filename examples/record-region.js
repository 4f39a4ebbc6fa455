// Records the middle of the primary monitor for five seconds into the current folder: node record-region.js

'use strict';

const { Brisolte } = require('brisolte');

const recorder = new Brisolte();
const { index, rect } = recorder.getMonitors().find(({ isPrimary }) => isPrimary);

// The region lies on the monitor that was set, in desktop coordinates; setRegion comes last because it sets the mode.
recorder.setMonitor(index);
recorder.setRegion({
  left: rect.left + Math.floor(rect.width / 4),
  top: rect.top + Math.floor(rect.height / 4),
  width: Math.floor(rect.width / 2),
  height: Math.floor(rect.height / 2),
});
recorder.setFrameRate(60);
recorder.setOutputDir(process.cwd());

if (!recorder.startRecord()) {
  throw new Error('the recording did not start; the log lines above say why');
}
setTimeout(() => {
  recorder.stopRecord();
  console.log(recorder.getSaveFilePath());
}, 5000);
