'use strict';

// An application that records with a Recorder until something ends it: node recording-host.js JOB, a file with { entry, options,
// told, end, after }. Its file `told` has { pid, startedAt } once it records; so many milliseconds `after` that it ends in the
// way that `end` says, if it ends by itself, and writes when to `told` with `.end` behind it.

const fs = require('node:fs');

const { entry, options, told, end, after } = JSON.parse(fs.readFileSync(process.argv[2], 'utf8'));
const { Recorder } = require(entry);
const recorder = new Recorder(options);

const ENDS = {
  exit: () => process.exit(3),
  exception: () => {
    throw new Error('nobody catches this');
  },
};

recorder.start().then(() => {
  fs.writeFileSync(`${told}.new`, JSON.stringify({ pid: recorder.pid, startedAt: Date.now() }));
  fs.renameSync(`${told}.new`, told);
  if (end in ENDS) {
    setTimeout(() => {
      fs.writeFileSync(`${told}.end`, String(Date.now()));
      ENDS[end]();
    }, after);
  }
});
