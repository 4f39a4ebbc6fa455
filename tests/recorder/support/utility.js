'use strict';

// Loaded first, this makes a process one of Electron's utilityProcess: it has a port in place of Node.js's channel, and ends at
// once when its application has ended.

const { EventEmitter } = require('node:events');

const send = process.send.bind(process);
process.parentPort = Object.assign(new EventEmitter(), { postMessage: (message) => send(message, () => {}) });
process.send = undefined;
process.on('message', (data) => process.parentPort.emit('message', { data }));
process.on('disconnect', () => process.kill(process.pid, 'SIGKILL'));
