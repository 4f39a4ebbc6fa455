'use strict';

// An application that records, and then does what its last argument says: node host.js OPTIONS FILE BODY. FILE then
// names the recorder's process.

const fs = require('node:fs');
const { Recorder } = require('../../../recorder');
const { launcherOfStandIn } = require('./launch');

const [job, told, body] = process.argv.slice(2);
const { limits, ...options } = JSON.parse(job);
const recorder = new Recorder(options, { launcher: launcherOfStandIn, limits });

recorder.once('start', () => {
  fs.writeFileSync(`${told}.new`, String(recorder.pid));
  fs.renameSync(`${told}.new`, told);
});
recorder.start().then(() => setTimeout(() => new Function('recorder', 'require', body)(recorder, require), 300));
