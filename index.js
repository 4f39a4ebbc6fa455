'use strict';

const { arch, platform } = process;

if (platform !== 'win32' || arch !== 'x64') {
  throw new Error(`brisolte records on Windows x64; this is ${platform} ${arch}`);
}

// In so many words, so that tools that follow what a program requires find the file.
const binary = require('./prebuilds/win32-x64/brisolte.node');

if (typeof binary.Brisolte !== 'function') {
  throw new Error('brisolte.node was loaded and gave no class: this program does not let addons use Node-API version 8');
}

module.exports = binary;
