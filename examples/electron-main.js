// The main process of an Electron application with a menu that starts and stops a recording:
// npm install electron brisolte, then npx electron electron-main.js
//
// Load brisolte in the main process only. How to package it: docs/electron.md.

'use strict';

const { app, BrowserWindow, dialog, Menu, shell } = require('electron');
const { Brisolte } = require('brisolte');

let recorder;

function start() {
  recorder.setMonitor(0);
  recorder.setOutputDir(app.getPath('videos'));
  if (!recorder.startRecord()) {
    dialog.showErrorBox('Recording', 'The recording did not start.');
  }
  showMenu();
}

function stop() {
  if (recorder.stopRecord()) {
    shell.showItemInFolder(recorder.getSaveFilePath());
  }
  showMenu();
}

function showMenu() {
  const running = recorder.isCapturing();
  const recording = [
    { label: 'Start', accelerator: 'CmdOrCtrl+R', enabled: !running, click: start },
    { label: 'Stop', accelerator: 'CmdOrCtrl+S', enabled: running, click: stop },
    { role: 'quit' },
  ];
  Menu.setApplicationMenu(Menu.buildFromTemplate([{ label: 'Recording', submenu: recording }]));
}

app.whenReady().then(() => {
  recorder = new Brisolte();
  showMenu();
  new BrowserWindow({ title: 'Recorder', width: 400, height: 200 });
});

// The file is complete only after stopRecord.
app.on('before-quit', () => recorder?.stopRecord());
app.on('window-all-closed', () => app.quit());
