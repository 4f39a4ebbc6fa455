'use strict';

const { arch, platform } = process;

if (platform !== 'win32' || arch !== 'x64') {
  throw new Error(`brisolte records on Windows x64; this is ${platform} ${arch}`);
}

module.exports = require('node-gyp-build')(__dirname);
