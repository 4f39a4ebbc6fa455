'use strict';

// The module of a recorder's process: the class of the main entry, and what only such a process asks of it.

function load() {
  if (process.platform === 'win32' && process.arch === 'x64') {
    // In so many words, so that tools that follow what a program requires find the file.
    const engine = require('../../prebuilds/win32-x64/recorder.node');
    if (typeof engine.Brisolte === 'function') {
      return engine;
    }
  }
  // The main entry says what is wrong.
  return require('../../index.js');
}

module.exports = load();
