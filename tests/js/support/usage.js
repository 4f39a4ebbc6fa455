'use strict';

// What a process holds of the system, told by programs from outside of it.

const { spawnSync } = require('node:child_process');
const fs = require('node:fs');
const { programs } = require('./desktop');
const { scratchFile } = require('./scratch');

/** Runs a program that writes one line of JSON, and gives that. */
function told(program, word) {
  const output = scratchFile('json');
  const file = fs.openSync(output, 'w');
  const { status } = spawnSync(program, [String(word)], { stdio: ['ignore', file, 'inherit'] });
  fs.closeSync(file);
  const text = fs.readFileSync(output, 'utf8');
  fs.rmSync(output);
  if (status !== 0) {
    throw new Error(`${program} ended with ${status}: ${text}`);
  }
  return JSON.parse(text);
}

// A window that Wine makes for a Direct3D device takes two GDI objects.
const GDI_OBJECTS_OF_WINDOW = 2;

/**
 * What this process holds once its garbage has gone, but for the windows that Wine keeps of devices.
 * @returns {object} privateBytes, workingSet, handles, threads, gdiObjects, windows, captureObjects, direct3dObjects,
 *   comLetGo (how often it let go of COM and with it of the capture service's library), of which the last three are null
 *   while the stand-ins are not loaded
 */
function usage() {
  global.gc();
  const { gdiObjects, deviceWindows, ...others } = told(programs.usage, process.pid);
  return { ...others, gdiObjects: gdiObjects - GDI_OBJECTS_OF_WINDOW * deviceWindows };
}

/**
 * What calls cost the system when they are made without the module: the handles that stay of RoGetActivationFactory, the
 * bytes of D3D11CreateDevice, and D3D11CreateDeviceMilliseconds.
 */
const systemCosts = (rounds = 40) => told(programs.bare, rounds);

/** The bytes that many commands of a Direct3D device leave while it lives, without the module, and as many again. */
const commandCosts = () => told(programs.bare, 'commands').commands;

module.exports = { commandCosts, systemCosts, usage };
