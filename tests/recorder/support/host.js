'use strict';

// An application that records, and then does what its last argument says: node host.js OPTIONS FILE BODY. FILE then
// names the recorder's process.

const fs = require('node:fs');
const path = require('node:path');
const { launch } = require('../../../lib/launch');
const { Recorder } = require('../../../recorder');

const [options, told, body] = process.argv.slice(2);
const recorder = new Recorder(JSON.parse(options), { launch: () => launch(path.join(__dirname, 'process.js')) });

recorder.once('start', () => {
  fs.writeFileSync(`${told}.new`, String(recorder.pid));
  fs.renameSync(`${told}.new`, told);
});
recorder.start().then(() => setTimeout(() => new Function('recorder', 'require', body)(recorder, require), 300));
