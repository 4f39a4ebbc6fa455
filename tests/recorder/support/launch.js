'use strict';

const path = require('node:path');
const { launcher } = require('../../../lib/launch');

/** Starts the process of a recorder as it is started here, but with the stand-in for the module. */
async function launcherOfStandIn() {
  const launch = await launcher();
  return () => launch(path.join(__dirname, 'process.js'));
}

module.exports = { launcherOfStandIn };
