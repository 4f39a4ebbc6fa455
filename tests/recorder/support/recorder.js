'use strict';

// Recorders whose processes have the stand-in for the module.

const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { Recorder } = require('../../../recorder');
const { launcherOfStandIn } = require('./launch');

/** A new empty folder, which is gone after the test. */
function folderOf(t) {
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'brisolte-recorder-'));
  t.after(() => fs.rmSync(folder, { recursive: true, force: true }));
  return folder;
}

/** A recorder, which is closed after the test, and all that it tells as [event, given]. */
function recorderOf(t, options, { limits } = {}) {
  const recorder = new Recorder({ directory: folderOf(t), ...options }, { launcher: launcherOfStandIn, limits });
  t.after(() => recorder.close());
  const events = [];
  const names = ['start', 'segment', 'pause', 'resume', 'stop', 'error', 'progress', 'warning', 'log'];
  names.forEach((name) => recorder.on(name, (given) => events.push([name, given])));
  const named = (name) => events.filter(([event]) => event === name).map(([, given]) => given);
  return { recorder, events, named };
}

module.exports = { folderOf, recorderOf };
