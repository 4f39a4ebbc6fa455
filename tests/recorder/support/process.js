'use strict';

// A recorder's process with the stand-in for the module.

const path = require('node:path');

const lib = path.join(__dirname, '..', '..', '..', 'lib');
require.cache[path.join(lib, '..', 'index.js')] = { exports: require('./module'), loaded: true };
require(path.join(lib, 'process', 'main.js'));
