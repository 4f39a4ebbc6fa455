// Records the first monitor for ten seconds, with the microphone and what the speaker plays, into the current folder:
// node record-screen-with-sound.js

'use strict';

const { Brisolte } = require('brisolte');

const recorder = new Brisolte();
const choose = (devices) => devices.find(({ isDefault }) => isDefault) ?? devices[0];
const microphone = choose(recorder.getMicrophones());
const speaker = choose(recorder.getSpeakers());

// An empty id leaves that sound out, so this also works on a machine without a microphone.
recorder.setMicrophoneDevice(microphone?.id ?? '');
recorder.setSpeakerDevice(speaker?.id ?? '');
recorder.setMonitor(0);
recorder.setOutputDir(process.cwd());

if (!recorder.startRecord()) {
  throw new Error('the recording did not start; the log lines above say why');
}
console.log(`recording with ${[microphone, speaker].map((device) => device?.name ?? 'no device').join(' and ')}`);
setTimeout(() => {
  recorder.stopRecord();
  console.log(recorder.getSaveFilePath());
}, 10000);
