'use strict';

const { spawn } = require('node:child_process');
const path = require('node:path');

const PROGRAM = path.join(__dirname, 'process', 'main.js');

/**
 * Starts the process of a recorder with the program that runs this one. Electron's runs a script when it is told to be
 * Node.js.
 *
 * Detached, because Node.js puts other children into a job object that ends with it; and in a folder that nobody wants to
 * delete, since a process keeps its current one. It shows no window and inherits no handle but those of its channel and output.
 */
function launch(program = PROGRAM) {
  const env = { ...process.env, ...(process.versions.electron && { ELECTRON_RUN_AS_NODE: '1' }) };
  // Those are for the application: a debugger's port, modules to load first.
  delete env.NODE_OPTIONS;
  return spawn(process.execPath, [program], {
    cwd: path.dirname(process.execPath),
    detached: true,
    env,
    stdio: ['ignore', 'pipe', 'pipe', 'ipc'],
    windowsHide: true,
  });
}

module.exports = { launch };
