'use strict';

// Loaded before a program, this gives its recorders processes with the stand-in for the module.

const path = require('node:path');
const launching = require('../../../lib/launch');

const { launch } = launching;
launching.launch = () => launch(path.join(__dirname, 'process.js'));
