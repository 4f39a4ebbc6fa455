// The main process of an Electron application with a menu that starts and stops a recording:
// npm install electron brisolte-0.1.0.tgz, then npx electron electron-main.js
//
// How to package it: docs/electron.md.

'use strict';

const { app, BrowserWindow, dialog, Menu, shell } = require('electron');
const { Recorder } = require('brisolte/recorder');

let recorder;

function showMenu() {
  const running = recorder.recording;
  const recording = [
    { label: 'Start', accelerator: 'CmdOrCtrl+R', enabled: !running, click: start },
    { label: 'Stop', accelerator: 'CmdOrCtrl+S', enabled: running, click: stop },
    { role: 'quit' },
  ];
  Menu.setApplicationMenu(Menu.buildFromTemplate([{ label: 'Recording', submenu: recording }]));
}

// What went wrong is shown by the events.
const start = () => recorder.start().then(showMenu, showError);
const stop = () => recorder.stop().catch(() => {});

const showError = ({ message }) => dialog.showErrorBox('Recording', message);

app.whenReady().then(() => {
  recorder = new Recorder({ monitor: 0, directory: app.getPath('videos') });
  recorder.on('error', showError);
  // However it ended: by the menu, on a full disk, because the process that records died.
  recorder.on('stop', ({ file }) => {
    shell.showItemInFolder(file);
    showMenu();
  });
  showMenu();
  new BrowserWindow({ title: 'Recorder', width: 400, height: 200 });
});

// A recording that runs when the application ends is completed by the process that records.
app.on('window-all-closed', () => app.quit());
