'use strict';

// The process in which a recorder runs the module. It takes orders over the channel of the process that started it, and of
// nobody else; when that process is gone or lets it go, it completes what it records, and ends.

const fs = require('node:fs');
const { stopLimit } = require('../limits');
const { markOf } = require('../log-lines');
const { Peer } = require('../protocol');
const { Service } = require('./service');
const { endWithin } = require('./watchdog');

// A process of Electron's `utilityProcess` has this in place of Node.js's channel, and ends with the application.
const { parentPort } = process;
if (!process.send && !parentPort) {
  throw new Error('this program is started by a Recorder, not by hand');
}

// Written between the lines of the module, which go to the same place.
function mark(request) {
  try {
    fs.writeSync(1, markOf(request));
  } catch {
    // Nobody reads it any more; that there is nobody is told by `disconnect`.
  }
}

function post(message) {
  if (message.answer !== undefined) {
    mark(message.answer);
  }
  if (parentPort) {
    parentPort.postMessage(message);
  } else if (process.connected) {
    // With a function that takes it, an error of the channel is not thrown at the process.
    process.send(message, () => {});
  }
}

const service = new Service({
  tell: (event, given) => peer.tell(event, given),
  ask: (call, given, within) => peer.ask(call, given, within, () => new Error('no answer')),
});
// Nobody is there any more to end it if it hangs.
async function end() {
  endWithin(stopLimit(await service.bytes()));
  await service.end();
  process.exit();
}

const peer = new Peer({ post, calls: service.calls, told: (event) => (event === 'end' ? end() : undefined) });

if (parentPort) {
  parentPort.on('message', ({ data }) => peer.receive(data));
} else {
  process.on('message', (message) => peer.receive(message));
  process.on('disconnect', end);
}
// What is typed at the application's terminal is for the application, which then ends or not.
process.on('SIGINT', () => {});
