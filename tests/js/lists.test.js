'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { openPattern } = require('./support/desktop');
const { loadSilently } = require('./support/package');
const { scenario } = require('./support/scenario');

const Brisolte = loadSilently();
const capture = new Brisolte();

function assertShape(object, shape) {
  assert.deepEqual(Object.keys(object), Object.keys(shape));
  assert.equal(Object.getPrototypeOf(object), Object.prototype);
  for (const [name, type] of Object.entries(shape)) {
    assert.equal(typeof object[name], type, name);
  }
}

function assertRect(rect) {
  const number = 'number';
  assertShape(rect, { left: number, top: number, right: number, bottom: number, width: number, height: number });
  assert.ok(Object.values(rect).every(Number.isInteger));
  assert.equal(rect.width, rect.right - rect.left);
  assert.equal(rect.height, rect.bottom - rect.top);
}

test('monitors have their shape, one is primary', () => {
  const monitors = capture.getMonitors();
  assert.ok(monitors.length > 0);
  monitors.forEach((monitor, index) => {
    assertShape(monitor, { index: 'number', name: 'string', isPrimary: 'boolean', rect: 'object' });
    assertRect(monitor.rect);
    assert.equal(monitor.index, index);
    assert.match(monitor.name, /^\\\\\.\\DISPLAY\d+$/);
    assert.ok(monitor.rect.width > 0 && monitor.rect.height > 0);
  });
  const [primary, ...more] = monitors.filter((monitor) => monitor.isPrimary);
  assert.equal(more.length, 0);
  assert.deepEqual([primary.rect.left, primary.rect.top], [0, 0]);
});

test('each call gives fresh objects', () => {
  const [first] = capture.getMonitors();
  first.name = 'changed';
  first.rect.left = 99;
  const [second] = capture.getMonitors();
  assert.notEqual(second.name, 'changed');
  assert.notEqual(second.rect.left, 99);
});

test('monitors are found by their exact name', () => {
  for (const { name } of capture.getMonitors()) {
    assert.equal(capture.setMonitorByName(name), true);
    for (const other of [name.toLowerCase(), `${name} `, ` ${name}`, `${name}\0`, name.slice(0, -1), '']) {
      assert.equal(capture.setMonitorByName(other), false, JSON.stringify(other));
    }
  }
});

test('a window is listed with its handle, title, class and place', async (t) => {
  const title = 'Aufnahme ü 漢字 🎬 "quoted"';
  const window = await openPattern(t, { title, x: 30, y: 40, width: 320, height: 200 });
  const listed = capture.getWindows();
  listed.forEach((each) => {
    assertShape(each, { handle: 'number', title: 'string', className: 'string', rect: 'object' });
    assertRect(each.rect);
  });
  const found = listed.filter((each) => each.handle === window.handle);
  assert.equal(found.length, 1);
  assert.equal(found[0].title, title);
  assert.equal(found[0].className, 'BrisoltePattern');
  assert.deepEqual(found[0].rect, { left: 30, top: 40, right: 350, bottom: 240, width: 320, height: 200 });
});

test('windows are listed only when visible, titled and larger than 50 by 50', async (t) => {
  const isListed = (window) => capture.getWindows().some((each) => each.handle === window.handle);
  const sizes = [
    { width: 51, height: 51, listed: true },
    { width: 50, height: 200, listed: false },
    { width: 200, height: 50, listed: false },
  ];
  for (const { listed, ...size } of sizes) {
    const window = await openPattern(t, { title: 'Small', ...size });
    assert.equal(isListed(window), listed, `${size.width}x${size.height}`);
    await window.close();
  }
  const untitled = await openPattern(t, { title: '' });
  assert.equal(isListed(untitled), false, 'without a title');
  await untitled.close();

  const window = await openPattern(t, { title: 'Now and then' });
  assert.equal(isListed(window), true);
  await window.command('hide');
  assert.equal(isListed(window), false, 'hidden');
  await window.command('show');
  assert.equal(isListed(window), true, 'shown again');
  await window.close();
  assert.equal(isListed(window), false, 'closed');
});

test('a long title is cut at 255 characters', async (t) => {
  const title = `${'abcdefghij'.repeat(30)}`;
  const window = await openPattern(t, { title });
  const found = capture.getWindows().find((each) => each.handle === window.handle);
  assert.equal(found.title, title.slice(0, 255));
});

test('codecs have their shape and include the software encoders', () => {
  const codecs = capture.getSupportVideoCodec();
  codecs.forEach((codec) => {
    const shape = { id: 'number', name: 'string', description: 'string', isHardwareAccel: 'boolean', pixelFormats: 'object' };
    assertShape(codec, shape);
    assert.ok(Array.isArray(codec.pixelFormats));
    assert.ok(codec.pixelFormats.every((format) => /^[a-z0-9_]+$/.test(format)), codec.name);
    assert.ok(codec.name.length > 0 && codec.description.length > 0);
  });
  const names = codecs.map((codec) => codec.name);
  assert.equal(new Set(names).size, names.length);
  for (const name of ['libx264', 'libx265', 'libvpx', 'libvpx-vp9', 'mpeg4', 'mjpeg', 'prores', 'prores_ks']) {
    assert.equal(codecs.find((codec) => codec.name === name)?.isHardwareAccel, false, name);
  }
  const x264 = codecs.find((codec) => codec.name === 'libx264');
  assert.ok(['yuv420p', 'nv12'].every((format) => x264.pixelFormats.includes(format)));
  assert.match(x264.description, /H\.264/);
});

const NVIDIA = ['h264_nvenc', 'hevc_nvenc', 'av1_nvenc'];
const INTEL = ['h264_qsv', 'hevc_qsv', 'av1_qsv', 'vp9_qsv', 'mjpeg_qsv', 'mpeg2_qsv'];

test('the probe logs what it finds and why a hardware encoder is missing', async () => {
  const { value, log } = await scenario(({ Brisolte: Capture }) => new Capture().getSupportVideoCodec());
  const names = value.map((codec) => codec.name);
  assert.deepEqual(log.messages('INFO').slice(0, 1), ['Getting supported video codecs...']);
  assert.equal(log.messages('INFO').at(-1), `Found ${names.length} supported video codecs`);
  for (const name of [...NVIDIA, ...INTEL]) {
    const refusals = log.messages('WARNING').filter((text) => text.startsWith(`Hardware codec ${name} not supported`));
    assert.equal(refusals.length, names.includes(name) ? 0 : 1, name);
    const supported = log.has('INFO', `Hardware codec ${name} supported by device`);
    assert.equal(supported, names.includes(name), name);
  }
  assert.ok(!log.text.includes('libx264'), 'software encoders are not opened');
  value
    .filter((codec) => codec.isHardwareAccel)
    .forEach(({ name }) => assert.ok(log.has('INFO', `Hardware codec ${name} supported by device`), name));
});

test('audio devices have their shape, one of each direction is the default', () => {
  for (const [devices, name] of [
    [capture.getMicrophones(), 'Microphone'],
    [capture.getSpeakers(), 'Speaker'],
  ]) {
    devices.forEach((device) => {
      assertShape(device, { id: 'string', name: 'string', isDefault: 'boolean', isActive: 'boolean' });
      assert.ok(device.id.length > 0);
      assert.equal(device.isActive, true);
    });
    assert.ok(devices.some((device) => device.name.includes(name)));
    assert.equal(devices.filter((device) => device.isDefault).length, 1);
    assert.equal(new Set(devices.map(({ id }) => id)).size, devices.length);
  }
});

test('enumerating audio devices says how many there are', async () => {
  const { value, log } = await scenario(({ Brisolte }) => {
    const instance = new Brisolte();
    return [instance.getMicrophones().length, instance.getSpeakers().length];
  });
  const [microphones, speakers] = value;
  assert.deepEqual(log.messages('INFO'), [
    'Starting microphone enumeration...',
    `Enumerated ${microphones} microphone devices`,
    `Microphone enumeration completed, found ${microphones} microphone devices`,
    'Starting speaker enumeration...',
    `Enumerated ${speakers} speaker devices`,
    `Speaker enumeration completed, found ${speakers} speaker devices`,
  ]);
});
