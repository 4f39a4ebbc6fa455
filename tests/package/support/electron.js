'use strict';

// Stands in for the module `electron` in an application's main process: it shows nothing, keeps the menu, and tells what
// the application asked for.

const { EventEmitter } = require('node:events');

const asked = [];
let menu = [];

const app = Object.assign(new EventEmitter(), {
  whenReady: () => Promise.resolve(),
  getPath: () => process.cwd(),
  quit() {
    app.emit('before-quit');
    app.emit('will-quit');
  },
});

const choose = (label) => {
  const item = menu.flatMap(({ submenu }) => submenu).find((each) => each.label === label);
  if (!item.enabled) {
    throw new Error(`${label} is not enabled`);
  }
  item.click();
};

module.exports = {
  app,
  BrowserWindow: class {},
  Menu: { buildFromTemplate: (template) => template, setApplicationMenu: (template) => (menu = template) },
  dialog: { showErrorBox: (title, text) => asked.push(['showErrorBox', title, text]) },
  shell: { showItemInFolder: (file) => asked.push(['showItemInFolder', file]) },
  test: { asked, choose },
};
