// Shows everything that can be recorded, and with what: node list.js

'use strict';

const { Brisolte } = require('brisolte');

const recorder = new Brisolte();
recorder.setLogLevel(3); // warnings and errors only

const place = ({ left, top, width, height }) => `${width} x ${height} at ${left}, ${top}`;

console.log('Monitors');
for (const { index, name, isPrimary, rect } of recorder.getMonitors()) {
  console.log(`  ${index}  ${name}  ${place(rect)}${isPrimary ? '  primary' : ''}`);
}

console.log('Windows, from front to back');
for (const { handle, title, rect } of recorder.getWindows()) {
  console.log(`  ${handle}  ${title}  ${place(rect)}`);
}

for (const [what, devices] of [
  ['Microphones', recorder.getMicrophones()],
  ['Speakers', recorder.getSpeakers()],
]) {
  console.log(what);
  for (const { id, name, isDefault } of devices) {
    console.log(`  ${id}  ${name}${isDefault ? '  default' : ''}`);
  }
}

console.log('Video encoders');
for (const { name, description, isHardwareAccel } of recorder.getSupportVideoCodec()) {
  console.log(`  ${name}  ${description}${isHardwareAccel ? '  hardware' : ''}`);
}
