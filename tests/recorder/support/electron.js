'use strict';

// Loaded before a program, this makes it the main process of an Electron application, as far as a recorder sees that.
// `require('electron').processes` are those that utilityProcess made.

const { fork } = require('node:child_process');
const { EventEmitter } = require('node:events');
const Module = require('node:module');
const path = require('node:path');
const { PassThrough } = require('node:stream');

Object.defineProperty(process, 'versions', { value: { ...process.versions, electron: '45.4.1' } });

class UtilityProcess extends EventEmitter {
  #child;
  stdout = new PassThrough();
  stderr = new PassThrough();
  pid;

  constructor(program, words, { cwd, env, stdio, serviceName }) {
    super();
    this.serviceName = serviceName;
    const execArgv = ['--require', path.join(__dirname, 'utility.js')];
    this.#child = fork(program, words, { cwd, env, execArgv, stdio: [...stdio, 'ipc'] });
    this.#child.stdout.pipe(this.stdout);
    this.#child.stderr.pipe(this.stderr);
    this.#child.on('spawn', () => {
      this.pid = this.#child.pid;
      this.emit('spawn');
    });
    this.#child.on('message', (message) => this.emit('message', message));
    this.#child.on('exit', (code) => {
      this.pid = undefined;
      this.emit('exit', code);
      [this.stdout, this.stderr].forEach((stream) => stream.removeAllListeners());
    });
  }

  postMessage(message) {
    this.#child.send(message, () => {});
  }

  kill() {
    return this.#child.kill('SIGKILL');
  }
}

const processes = [];
const electron = {
  app: { isReady: true },
  // Two displays side by side, the second at 150 %: in points it begins where the first one ends.
  screen: {
    getAllDisplays: () => [
      { id: 11, bounds: { x: 0, y: 0, width: 1280, height: 720 } },
      { id: 2_528_732_444, bounds: { x: 1280, y: 0, width: 1280, height: 720 } },
    ],
    dipToScreenRect: (window, { x, y, width, height }) => (x === 0 ? { x, y, width, height } : { x: 1281, y: 1, width: 1920, height: 1080 }),
  },
  processes,
  utilityProcess: {
    fork(...words) {
      if (!electron.app.isReady) {
        throw new Error('utilityProcess cannot be created before app is ready');
      }
      processes.push(new UtilityProcess(...words));
      return processes.at(-1);
    },
  },
};

const load = Module._load;
Module._load = (request, ...others) => (request === 'electron' ? electron : load(request, ...others));
