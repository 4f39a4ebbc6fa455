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

const LINE_TIME = /^(\d{4}-\d\d-\d\d) (\d\d:\d\d:\d\d) \[/gm;

/** By how many seconds the clock jumps in a log, going by the times of its lines. Processes see a new time within two seconds. */
function jumpIn({ text }) {
  const times = [...text.matchAll(LINE_TIME)].map(([, day, time]) => Date.parse(`${day}T${time}Z`) / 1000);
  const steps = times.slice(1).map((time, i) => time - times[i]);
  return steps.reduce((most, step) => (Math.abs(step) > Math.abs(most) ? step : most), 0);
}

module.exports = { jumpIn, setClock, stopClock };
