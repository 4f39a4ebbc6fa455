'use strict';

const { spawn } = require('node:child_process');
const path = require('node:path');
const { runsAsNode } = require('./fuses');
const { UtilityChild } = require('./utility-child');

const PROGRAM = path.join(__dirname, 'process', 'main.js');
// Nobody wants to delete this folder; a process keeps its current one.
const folder = () => path.dirname(process.execPath);

/**
 * Starts the process of a recorder with the program that runs this one. Electron's runs a script when it is told to be
 * Node.js.
 *
 * Detached, because Node.js puts other children into a job object that ends with it. It shows no window and inherits no handle
 * but those of its channel and output.
 */
function launchNode(program = PROGRAM) {
  return spawn(process.execPath, [program], {
    cwd: folder(),
    detached: true,
    env: { ...environment(), ...(process.versions.electron && { ELECTRON_RUN_AS_NODE: '1' }) },
    stdio: ['ignore', 'pipe', 'pipe', 'ipc'],
    windowsHide: true,
  });
}

/** Starts it as a part of an Electron application whose program cannot be Node.js; it ends with the application. */
function launchUtility(program = PROGRAM) {
  const utilityProcess = ofElectron();
  if (!utilityProcess) {
    throw new Error("the application's fuse RunAsNode is off, so that recorders work in its main process alone");
  }
  const stdio = ['ignore', 'pipe', 'pipe'];
  return new UtilityChild(utilityProcess.fork(program, [], { cwd: folder(), env: environment(), serviceName: 'Recorder', stdio }));
}

/** Electron's `utilityProcess`; undefined anywhere but in the main process. */
function ofElectron() {
  try {
    return require('electron').utilityProcess;
  } catch {
    return undefined;
  }
}

/** The application's environment, but for what is meant for the application: a debugger's port, modules to load first. */
function environment() {
  return Object.fromEntries(Object.entries(process.env).filter(([name]) => name.toUpperCase() !== 'NODE_OPTIONS'));
}

let known;

/**
 * How the process of a recorder is started here; it takes a moment to know only in Electron.
 * @returns {Promise<(program?: string) => import('node:child_process').ChildProcess | UtilityChild>}
 */
function launcher() {
  return (known ??= choose());
}

async function choose() {
  // A program that cannot be read has not been changed either.
  const asNode = !process.versions.electron || (await runsAsNode(process.execPath).catch(() => true));
  return asNode ? launchNode : launchUtility;
}

module.exports = { launchNode, launcher };
