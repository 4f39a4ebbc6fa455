'use strict';

// A recorder's process with the stand-in for the module.

const path = require('node:path');

const lib = path.join(__dirname, '..', '..', '..', 'lib');
// What this process gives itself for its end once its application has gone.
require(path.join(lib, 'limits.js')).LIMITS.stop = 3000;
require.cache[path.join(lib, 'process', 'engine.js')] = { exports: require('./module'), loaded: true };
require(path.join(lib, 'process', 'main.js'));
