'use strict';

// Loaded before a program, this gives its recorders processes with the stand-in for the module.

const launching = require('../../../lib/launch');
const { launcherOfStandIn } = require('./launch');

launching.launcher = launcherOfStandIn;
