'use strict';

// Recordings in a process of their own, on the module that ships.

const assert = require('node:assert/strict');
const { once } = require('node:events');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { Worker } = require('node:worker_threads');
const { openPattern } = require('./support/desktop');
const media = require('./support/media');
const { loadSilently, packageFolder } = require('./support/package');
const { NUMBERS, readNumber } = require('./support/pattern');
const { fillDisk, scratchFolder, smallDisk } = require('./support/scratch');
const { playTone } = require('./support/sound');

const ENTRY = path.join(packageFolder, 'recorder.js');
const { Recorder } = require(ENTRY);
const SMALL = { x: 30, y: 30, width: 320, height: 192 };

/** A recorder of a window that moves, which ends with the test. */
async function recorderOf(t, options) {
  const window = await openPattern(t, { title: 'Recorded', ...SMALL });
  const recorder = new Recorder({ window: window.handle, ...options });
  t.after(() => recorder.close());
  return { recorder, window };
}

const secondsOf = (file) => Number(media.describe(file).format.duration);
const stopOf = (recorder) => new Promise((resolve) => recorder.once('stop', resolve));

test('a window is recorded into the file that was named, with the microphone and the speaker', async (t) => {
  await playTone(t, { endpoint: 'Speaker', frequency: 1000 });
  const file = path.join(scratchFolder(), 'Gespräch 漢字.mp4');
  const { recorder, window } = await recorderOf(t, { file, microphone: 'default', speaker: 'default', logLevel: 'debug' });
  const events = [];
  ['start', 'stop', 'error'].forEach((name) => recorder.on(name, (given) => events.push([name, given])));
  const log = [];
  recorder.on('log', ({ source, level, text }) => log.push(`${source} ${level} ${text}`));
  await recorder.start();
  assert.notEqual(recorder.pid, process.pid);
  const [progress] = await once(recorder, 'progress');
  await window.paintedMore(90);
  const result = await recorder.stop();
  assert.deepEqual([result.file, result.files, result.reason], [file, [file], 'requested']);
  assert.deepEqual(events.map(([name]) => name), ['start', 'stop']);
  assert.deepEqual(events[1][1], result);
  assert.equal(path.dirname(progress.file), path.dirname(file));
  assert.ok(progress.freeBytes > 0 && progress.bytes <= result.bytes && progress.seconds < result.seconds);
  assert.deepEqual(fs.readdirSync(path.dirname(file)), [path.basename(file)]);
  assert.equal(result.bytes, fs.statSync(file).size);
  const { streams, format } = media.describe(file);
  assert.deepEqual(streams.map((stream) => stream.codec_type), ['video', 'audio', 'audio']);
  assert.ok(Math.abs(Number(format.duration) - result.seconds) < 1, `${format.duration} s of ${result.seconds}`);
  assert.ok(log.includes('brisolte info FFmpegEncoder: Trailer written successfully, output file closed'), log.join('\n'));
  // Wine keeps what goes to standard error until it is four kilobytes, or the process ends.
  await recorder.close();
  assert.ok(log.some((line) => /^ffmpeg info \[libx264 @ /.test(line)), log.join('\n'));
});

test('the screen, a region of it and sound alone are recorded', async (t) => {
  const window = await openPattern(t, { title: 'Seen', ...SMALL });
  const region = { left: 40, top: 40, width: 300, height: 101 };
  const recordings = [
    [{}, { width: 1280, height: 720 }],
    [{ region }, { width: 300, height: 102 }],
    [{ picture: false, microphone: 'default' }, undefined],
  ];
  for (const [options, size] of recordings) {
    const recorder = new Recorder({ directory: scratchFolder(), ...options });
    t.after(() => recorder.close());
    await recorder.start();
    await once(recorder, 'progress');
    await window.paintedMore(60);
    const { file } = await recorder.stop();
    const { video } = media.describe(file);
    assert.deepEqual(video && { width: video.width, height: video.height }, size);
    await recorder.close();
  }
});

test('a long recording is split into files that each play alone, and nothing between them is lost', async (t) => {
  const file = path.join(scratchFolder(), 'talk.mp4');
  const wanted = { file, microphone: 'default', speaker: 'default', segments: { seconds: 2 }, stopAfter: { seconds: 7 } };
  const { recorder, window } = await recorderOf(t, wanted);
  const segments = [];
  recorder.on('segment', (segment) => segments.push(segment));
  await recorder.start();
  const { files, reason } = await stopOf(recorder);
  assert.equal(reason, 'seconds');
  assert.deepEqual(segments.map((segment) => segment.file), files.slice(0, -1));
  assert.deepEqual(fs.readdirSync(path.dirname(file)), files.map((each) => path.basename(each)));
  media.assertWhole(files);
  const segmentsOf = files.map((each) => contentOf(each, window));
  segmentsOf.slice(1).forEach((after, i) => {
    const before = segmentsOf[i];
    const shared = (before.pictures.at(-1).number - after.pictures[0].number + NUMBERS) % NUMBERS;
    assert.ok(shared < NUMBERS / 2, `${NUMBERS - shared} pictures are in neither ${files[i]} nor the next`);
    const [earlier, later] = sameMoment(before.pictures, after.pictures);
    assert.deepEqual([before.sounds.length, after.sounds.length], [2, 2]);
    after.sounds.forEach(([first], sound) => {
      const missing = first - later.ms - (before.sounds[sound].at(-1) - earlier.ms);
      assert.ok(missing <= 0, `${missing} ms of sound ${sound} are in neither ${files[i]} nor the next`);
    });
  });
});

/** A recording's pictures as { number, ms }, and the times of the packets of its sounds, in milliseconds. */
function contentOf(file, window) {
  const { packets, sounds } = media.describe(file);
  const times = packets.map(({ ms }) => ms).sort((a, b) => a - b);
  return { sounds, pictures: media.frames(file).map((frame, i) => ({ number: readNumber(frame, window), ms: times[i] })) };
}

const AT_MOST_PICTURES = 3;

/**
 * A moment that is in two recordings, as each of them has it: by it their times can be compared. It is a picture of the window
 * in the later one, and the same or one of the next in the earlier one, since each of them has every second or third. The
 * latest of them, because the first of a recording may have been there for long when that began; and where it is first, because
 * the last picture is there once more at the end.
 */
function sameMoment(before, after) {
  const firsts = (pictures) => new Map([...pictures].reverse().map((picture) => [picture.number, picture]));
  const known = firsts(before);
  const later = [...firsts(after).values()].sort((a, b) => b.ms - a.ms);
  for (let ahead = 0; ahead <= AT_MOST_PICTURES; ahead += 1) {
    const found = later.find(({ number }) => known.has((number + ahead) % NUMBERS));
    if (found) {
      return [known.get((found.number + ahead) % NUMBERS), found];
    }
  }
  throw new Error('no moment is in both');
}

test('a recording ends at its limits of time and of size', async (t) => {
  const limits = [
    ['seconds', { seconds: 1.5 }, ({ file }) => Math.abs(secondsOf(file) - 1.5) < 0.7],
    ['bytes', { bytes: 30_000 }, ({ bytes }) => bytes >= 30_000],
  ];
  for (const [reason, stopAfter, holds] of limits) {
    const { recorder } = await recorderOf(t, { directory: scratchFolder(), stopAfter });
    await recorder.start();
    const result = await stopOf(recorder);
    assert.equal(result.reason, reason);
    media.assertWhole([result.file]);
    assert.ok(holds(result), `${JSON.stringify(result)}, ${secondsOf(result.file)} s`);
  }
});

test('a recording ends at its limit of free space, and before the disk is full without one', async (t) => {
  const directory = smallDisk(t);
  await openPattern(t, { title: 'Filling', width: 1000, height: 600 });
  const free = fs.statfsSync(directory);
  const freeBytes = Math.round(free.bavail * free.bsize * 0.75);
  for (const options of [{ stopAfter: { freeBytes } }, {}, { logLevel: 'error' }]) {
    const recorder = new Recorder({ directory, encoder: 'mjpeg', ...options });
    t.after(() => recorder.close());
    await recorder.start();
    const { file, reason } = await stopOf(recorder);
    assert.equal(reason, 'freeBytes');
    media.assertWhole([file]);
    fs.rmSync(file);
    await recorder.close();
  }
});

test('a disk that is full already is told, at the start or at the stop', async (t) => {
  const directory = smallDisk(t);
  fillDisk(directory);
  const starts = { libx264: 'rejected', mjpeg: 'fulfilled' };
  for (const [encoder, status] of Object.entries(starts)) {
    const recorder = new Recorder({ directory, encoder });
    t.after(() => recorder.close());
    const [started] = await Promise.allSettled([recorder.start()]);
    assert.equal(started.status, status, started.reason);
    const told = started.reason ?? (await recorder.stop().catch((error) => error));
    assert.match(told.code, /^ERR_RECORDER_(START|INCOMPLETE)$/);
    assert.match(told.message, / Make room on the disk\.$/);
    await recorder.close();
  }
});

test('two recorders record at once, into the same folder', async (t) => {
  const directory = scratchFolder();
  const recorders = [];
  for (const name of ['one.mp4', 'two.mp4']) {
    recorders.push((await recorderOf(t, { file: path.join(directory, name) })).recorder);
  }
  await Promise.all(recorders.map((recorder) => recorder.start()));
  assert.notEqual(recorders[0].pid, recorders[1].pid);
  await Promise.all(recorders.map((recorder) => once(recorder, 'progress')));
  const results = await Promise.all(recorders.map((recorder) => recorder.stop()));
  assert.deepEqual(fs.readdirSync(directory).sort(), ['one.mp4', 'two.mp4']);
  media.assertWhole(results.map(({ file }) => file));
});

test('a worker thread records', async (t) => {
  const file = path.join(scratchFolder(), 'worker.mp4');
  const window = await openPattern(t, { title: 'Of a worker', ...SMALL });
  const source = `
    const { parentPort, workerData: { entry, options } } = require('node:worker_threads');
    const { Recorder } = require(entry);
    const recorder = new Recorder(options);
    recorder.once('progress', () => recorder.stop().then((result) => parentPort.postMessage(result)));
    recorder.start();`;
  const worker = new Worker(source, { eval: true, workerData: { entry: ENTRY, options: { file, window: window.handle } } });
  const [result] = await once(worker, 'message');
  assert.deepEqual([result.file, result.reason], [file, 'requested']);
  media.assertWhole([file]);
  await worker.terminate();
});

test('the lists are what the module says, and screenshots are taken', async (t) => {
  const window = await openPattern(t, { title: 'Listed', ...SMALL });
  const instance = new (loadSilently())();
  assert.deepEqual(await Recorder.monitors(), instance.getMonitors());
  assert.deepEqual(await Recorder.microphones(), instance.getMicrophones());
  assert.deepEqual(await Recorder.speakers(), instance.getSpeakers());
  assert.deepEqual(await Recorder.encoders(), instance.getSupportVideoCodec());
  assert.ok((await Recorder.windows()).some(({ title, handle }) => title === 'Listed' && handle === window.handle));
  const file = path.join(scratchFolder(), 'window.png');
  assert.equal(await Recorder.screenshot({ window: 'Listed' }, file), file);
  const head = fs.readFileSync(file);
  assert.deepEqual([head.readUInt32BE(16), head.readUInt32BE(20)], [320, 192]);
});

// The module says of these that they record.
const NO_HEADER =
  'The recording did not start. FFmpegEncoder: Failed to write file header: Invalid argument. Leave out the sound, or choose an encoder for MP4.';

test('a start that is refused says why, leaves nothing, and the next one records', async (t) => {
  const window = await openPattern(t, { title: 'After a refusal', ...SMALL });
  const directory = scratchFolder();
  const refused = [
    [{ monitor: 9 }, 'The recording did not start. Invalid monitor index: 9. Recorder.monitors() lists the monitors that there are.'],
    [{ window: 1 }, 'The recording did not start. Invalid window handle. The window is gone; Recorder.windows() lists those that there are.'],
    [{ encoder: 'nonesuch' }, 'The recording did not start. Encoder nonesuch not found! Recorder.encoders() lists the names that can be given.'],
    [{ picture: false, microphone: 'default', speaker: 'default' }, NO_HEADER],
    [{ encoder: 'h263', region: { left: 0, top: 0, width: 352, height: 288 } }, NO_HEADER],
  ];
  for (const [options, message] of refused) {
    const recorder = new Recorder({ directory, ...options });
    await assert.rejects(recorder.start(), { code: 'ERR_RECORDER_START', message });
    await recorder.close();
  }
  const recorder = new Recorder({ directory, window: window.handle });
  await recorder.start();
  await once(recorder, 'progress');
  const { file } = await recorder.stop();
  await recorder.close();
  assert.deepEqual(fs.readdirSync(directory), [path.basename(file)]);
});

test('the process that records is killed: the host is told, and what can be played is named', async (t) => {
  const { recorder, window } = await recorderOf(t, { directory: scratchFolder(), encoder: 'libvpx' });
  const errors = [];
  recorder.on('error', (error) => errors.push(error));
  await recorder.start();
  await once(recorder, 'progress');
  await window.paintedMore(120);
  const stopped = stopOf(recorder);
  process.kill(recorder.pid);
  const { reason, files } = await stopped;
  assert.deepEqual([reason, errors.length, errors[0].code], ['failed', 1, 'ERR_RECORDER_LOST']);
  assert.deepEqual(errors[0].files, files);
  assert.ok(media.describe(files[0]).packets.at(-1).ms > 500);
  await assert.rejects(recorder.stop(), errors[0]);
  await recorder.start();
  await once(recorder, 'progress');
  media.assertWhole([(await recorder.stop()).file]);
});

test('a file has the ending of what its encoder records into', async (t) => {
  for (const [encoder, ending] of Object.entries({ libvpx: 'webm', 'libvpx-vp9': 'webm', prores_ks: 'mov', mjpeg: 'avi', mpeg4: 'mp4' })) {
    const { recorder } = await recorderOf(t, { directory: scratchFolder(), encoder });
    await recorder.start();
    const { file } = await recorder.stop();
    assert.equal(path.extname(file), `.${ending}`);
    assert.throws(() => new Recorder({ file: 'a.mkv', encoder }), { message: new RegExp(`ends in \\.${ending},`) });
    await recorder.close();
  }
});
