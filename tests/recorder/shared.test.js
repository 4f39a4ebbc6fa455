'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { Shared } = require('../../lib/shared');
const { waitFor } = require('../js/support/wait');
const { isThere } = require('../js/support/processes');
const { launcherOfStandIn } = require('./support/launch');
const { folderOf } = require('./support/recorder');

test('all ask the same process, which ends when nobody did for some seconds', async (t) => {
  const shared = new Shared(launcherOfStandIn);
  const file = path.join(folderOf(t), 'screen.png');
  const asked = [shared.ask('list', 'monitors'), shared.ask('list', 'windows'), shared.ask('screenshot', { target: { monitor: 0 }, file })];
  const [monitors, windows] = await Promise.all(asked);
  const { pid } = shared;
  assert.deepEqual([monitors[1].name, windows[0].title, fs.readFileSync(file, 'utf8')], ['\\\\.\\DISPLAY2', 'Notes', 'PNG']);
  await shared.ask('list', 'microphones');
  assert.equal(shared.pid, pid);
  await waitFor('the end of the process', () => !isThere(pid), 20_000);
  assert.equal(shared.pid, undefined);
  assert.equal((await shared.ask('list', 'monitors')).length, 2);
});

test('what fails says why', async () => {
  const shared = new Shared(launcherOfStandIn);
  const message = 'Error getting supported video codecs: out of memory.';
  await assert.rejects(shared.ask('list', 'encoders'), { code: 'ERR_RECORDER_FAILED', message });
  const screenshot = shared.ask('screenshot', { target: { monitor: 9 }, file: 'x.png' });
  await assert.rejects(screenshot, {
    code: 'ERR_RECORDER_SCREENSHOT',
    message: 'The screenshot failed. Invalid monitor index. Recorder.monitors() lists the monitors that there are.',
  });
});

test('who gives up waits no longer', async () => {
  const shared = new Shared(launcherOfStandIn);
  const controller = new AbortController();
  const asked = shared.ask('list', 'monitors', controller.signal);
  controller.abort();
  await assert.rejects(asked, { name: 'AbortError' });
  await assert.rejects(shared.ask('list', 'monitors', controller.signal), { name: 'AbortError' });
  assert.equal((await shared.ask('list', 'monitors')).length, 2);
});
