'use strict';

// The clock that the processes of this session see. That of the machine stays as it is.

const fs = require('node:fs');

const file = process.env.BRISOLTE_CLOCK;

function show(text) {
  if (!file) {
    throw new Error('BRISOLTE_CLOCK must name the file of what the clock shows');
  }
  // Renamed into its place, because processes look at it all the time.
  fs.writeFileSync(`${file}.new`, text);
  fs.renameSync(`${file}.new`, file);
}

/** Sets the clock to so many seconds after that of the machine; a negative number sets it back. */
const setClock = (seconds) => show(`${seconds < 0 ? '-' : '+'}${Math.abs(seconds)}`);

/** Stops the clock at a moment of local time, as in "2026-01-31 23:59:59". */
const stopClock = (moment) => show(moment);

module.exports = { setClock, stopClock };
