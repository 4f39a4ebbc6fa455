'use strict';

// Stands in for the module `electron` in an application's main process and its preload script: it shows nothing, keeps the menu and
// what the two tell each other, and tells what the application asked for.

const { EventEmitter } = require('node:events');

const asked = [];
const handlers = new Map();
const exposed = {};
const sources = [];
let menu = [];

const app = Object.assign(new EventEmitter(), {
  whenReady: () => Promise.resolve(),
  getPath: () => process.cwd(),
  quit() {
    let prevented = false;
    app.emit('before-quit', { preventDefault: () => (prevented = true) });
    if (!prevented) {
      app.emit('will-quit');
    }
  },
});

const choose = (label) => {
  const item = menu.flatMap(({ submenu }) => submenu).find((each) => each.label === label);
  if (!item.enabled) {
    throw new Error(`${label} is not enabled`);
  }
  item.click();
};

// What goes from one process to the other is copied.
const invoke = async (channel, ...words) => structuredClone(await handlers.get(channel)({}, ...structuredClone(words)));

module.exports = {
  app,
  BrowserWindow: class {},
  contextBridge: { exposeInMainWorld: (name, api) => (exposed[name] = api) },
  desktopCapturer: { getSources: async () => sources },
  dialog: { showErrorBox: (title, text) => asked.push(['showErrorBox', title, text]) },
  ipcMain: { handle: (channel, handler) => handlers.set(channel, handler) },
  ipcRenderer: { invoke },
  Menu: { buildFromTemplate: (template) => template, setApplicationMenu: (template) => (menu = template) },
  shell: { showItemInFolder: (file) => asked.push(['showItemInFolder', file]) },
  test: { asked, choose, exposed, invoke, sources },
};
