'use strict';

// The sound server is a program of the host, below Wine, which shows its devices as endpoints.

const assert = require('node:assert/strict');
const { spawnSync } = require('node:child_process');
const { scenario } = require('./scenario');
const { waitFor } = require('./wait');

/** Tells the sound server something; it has done so a little later. */
function tell(...words) {
  const { status } = spawnSync('start', ['/unix', '/usr/bin/pactl', ...words], { stdio: 'ignore' });
  assert.equal(status, 0, `start pactl ${words}`);
}

/** Takes the microphone away. */
const unplugMicrophone = () => tell('unload-module', 'module-remap-source');

/**
 * Adds a render endpoint for each of these, and a capture endpoint that hears what is played there.
 * @param {{name: string, rate: number, speakers: string[]}[]} formats of the endpoints: hertz, and where each channel is, in
 *   the sound server's words
 * @returns {Promise<{speaker: string, microphone: string}[]>} the ids of each one's endpoints
 */
async function plugIn(formats) {
  for (const { name, rate, speakers } of formats) {
    const format = [`rate=${rate}`, `channels=${speakers.length}`, `channel_map=${speakers}`];
    // Without rewinds, as the session's own endpoints are.
    const words = ['norewinds=1', `sink_name=${name}`, `sink_properties=device.description=${name}`, ...format];
    tell('load-module', 'module-null-sink', ...words);
  }
  const names = formats.map(({ name }) => name);
  return waitFor(`the endpoints ${names}`, async () => {
    // In a process of its own: Wine lists to a process what there was when it began.
    const { speakers, microphones } = (await scenario(listDevices)).value;
    const named = (devices, name) => devices.find((device) => device.name === name)?.id;
    const ids = names.map((name) => ({ speaker: named(speakers, name), microphone: named(microphones, `Monitor of ${name}`) }));
    return ids.every(({ speaker, microphone }) => speaker && microphone) && ids;
  });
}

function listDevices({ Brisolte }) {
  const capture = new Brisolte();
  return { speakers: capture.getSpeakers(), microphones: capture.getMicrophones() };
}

module.exports = { plugIn, unplugMicrophone };
