'use strict';

// Each call of the sound system fails: in the lists of devices, and in recordings of a window with both sounds.

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { assertRecording } = require('../support/check');
const { ACCESS_DENIED, FAULTS_FILE, failingCalls, letSoundFail } = require('../support/faults');
const { recordUnder, told } = require('../support/faulty-recording');
const { assertWhole, describe, sound } = require('../support/media');
const { NUMBERS } = require('../support/pattern');
const { scenario } = require('../support/scenario');
const { microphone, speaker } = require('../support/sound');

const DENIED = `HRESULT: ${ACCESS_DENIED}`;
const INVALID_POINTER = '0x80004003';
const DEVICE_INVALIDATED = '0x88890004';

const calls = failingCalls('Sound');
const callOf = (rule) => rule.split(' ')[0].split(':').at(-1);

const soundsOf = (file) => describe(file).streams.filter(({ codec_type: type }) => type === 'audio');

/**
 * How much longer each of the two sounds of a file goes on than the picture during which a call failed, in seconds. All of
 * the picture is checked on the way.
 */
function soundsAfterFault({ outcome, picture }) {
  const { failedAt } = outcome;
  const { packets, numbers } = assertRecording(outcome, { picture });
  // The count may lag behind the picture by one, and the numbers begin again after the last.
  const distance = (number) => (((number - failedAt) % NUMBERS) + NUMBERS) % NUMBERS;
  const later = (number) => distance(number) > 1 && distance(number) < NUMBERS / 2;
  const fault = packets[numbers.findIndex(later)].ms / 1000;
  return soundsOf(outcome.file).map(({ start_time: start, duration }) => Number(start) + Number(duration) - fault);
}

/**
 * Records with both sounds while calls fail; the last recording, without a fault, has a picture and both. Gives for each
 * other one { outcome, picture }.
 */
async function recordSounds(t, given) {
  const settings = [microphone(), speaker()];
  letSoundFail(t);
  const { outcomes, good, picture } = await recordUnder(t, { settings, pictures: 10, ...given });
  assert.deepEqual([good.started, good.stopped, good.errors, good.warnings], [true, true, [], []]);
  assertRecording(good, { picture });
  assert.equal(soundsOf(good.file).length, 2);
  [0, 1].forEach((index) => assert.ok(sound(good.file, index).samples.length > 0, `sound ${index}`));
  assertWhole(outcomes.filter(({ started }) => started).map(({ file }) => file));
  return outcomes.map((outcome) => ({ outcome, picture }));
}

/** Each line begins with the text here; the system's own text may follow. */
function assertLines(seen, wanted, what) {
  assert.equal(seen.length, wanted.length, what);
  wanted.forEach((text, line) => assert.ok(seen[line].startsWith(text), what));
}

const once = (call, skip = 0) => `${call} ${ACCESS_DENIED} skip ${skip} times 1`;
const withText = (rule, text, endpoint) => ({
  rule,
  errors: [`${text}${DENIED}`, `Failed to initialize ${endpoint}`],
  sounds: 1,
});
const withoutPlayer = (rule, text) => ({
  rule,
  errors: [`${text}${DENIED}`, `Failed to initialize silent audio player: ${DENIED}`],
  warnings: [
    'Continuing with speaker capture initialization without silent audio player',
    'Cannot start silent audio playback: client not initialized',
  ],
});
const playerEnds = (call, text) => ({ rule: once(`player:${call}`), errors: [`${text}${DENIED}`] });
const refused = { started: false, sounds: 0 };

// What is logged for each call that fails when a recording starts, how many sounds the file has (both), and whether there is
// a recording at all. First those that give something, which they may fail to do in two ways.
const GIVING = [
  {
    rule: once('CreateDeviceEnumerator'),
    ...refused,
    errors: [`AudioCapture: Failed to create device enumerator: ${DENIED}`, 'Failed to create video capture'],
  },
  {
    rule: `GetDevice ${ACCESS_DENIED}`,
    ...refused,
    errors: [
      `Failed to get microphone device by ID: ${DENIED}`,
      'Failed to initialize microphone',
      `Failed to get speaker device by ID: ${DENIED}`,
      'Failed to initialize speaker',
      'Failed to initialize both microphone and speaker streams',
      'AudioCapture: Failed to initialize audio',
      'Failed to create video capture',
    ],
  },
  ...['microphone', 'speaker'].flatMap((endpoint, index) => [
    withText(once('GetDevice', index), `Failed to get ${endpoint} device by ID: `, endpoint),
    withText(once(`${endpoint}:ActivateDevice`), `Failed to activate ${endpoint} device: `, endpoint),
    withText(once(`${endpoint}:GetService`), `Failed to get ${endpoint} capture client: `, endpoint),
  ]),
  withoutPlayer(once('speaker:ActivateDevice', 1), 'Failed to activate silent audio client: '),
  withoutPlayer(once('player:GetService'), 'Failed to get silent audio render client: '),
];
const AT_START = [
  ...GIVING,
  ...['microphone', 'speaker'].flatMap((endpoint) => [
    withText(once(`${endpoint}:GetDeviceState`), `Failed to get ${endpoint} device state: `, endpoint),
    withText(once(`${endpoint}:GetMixFormat`), `Failed to get ${endpoint} mix format: `, endpoint),
    withText(once(`${endpoint}:InitializeClient`), `Failed to initialize ${endpoint} audio client: `, endpoint),
    withText(once(`${endpoint}:StartClient`), `Failed to start ${endpoint} audio client: `, endpoint),
  ]),
  withoutPlayer(once('speaker:GetMixFormat', 1), 'Failed to get silent audio mix format: '),
  withoutPlayer(once('player:InitializeClient'), 'Failed to initialize silent audio client: '),
  withoutPlayer(once('player:GetBufferSize'), 'Failed to get silent audio buffer size: '),
  playerEnds('StartClient', 'Failed to start silent audio client: '),
];

// The calls of a recording that runs, and what is logged of them: the microphone and the speaker are asked again at once.
const RUNNING = [
  ...['microphone', 'speaker'].flatMap((endpoint) => [
    { rule: once(`${endpoint}:GetNextPacketSize`) },
    { rule: once(`${endpoint}:GetCaptureBuffer`) },
    { rule: once(`${endpoint}:ReleaseCaptureBuffer`) },
  ]),
  playerEnds('GetCurrentPadding', 'Failed to get silent audio padding: '),
  playerEnds('GetRenderBuffer', 'Failed to get silent audio buffer: '),
  playerEnds('ReleaseRenderBuffer', 'Failed to release silent audio buffer: '),
];
const AT_STOP = [{ rule: `StopClient ${ACCESS_DENIED}` }];

// The lists of devices with a call that fails, made of the complete one.
const noDefault = (device) => ({ ...device, isDefault: false });
const IN_LISTS = [
  {
    rule: once('CreateDeviceEnumerator'),
    expected: () => [],
    errors: [`Failed to create device enumerator for EnumerateAudioDevices: ${DENIED}`],
  },
  { rule: once('EnumAudioEndpoints'), expected: () => [], errors: [`Failed to enumerate audio endpoints: ${DENIED}`] },
  { rule: once('GetDefaultAudioEndpoint'), expected: (all) => all.map(noDefault) },
  { rule: once('GetDeviceId'), expected: (all) => all.map(noDefault) },
  {
    rule: once('GetDeviceAt'),
    expected: (all) => all.slice(1),
    errors: [`Failed to get device at index 0: ${DENIED}`],
  },
  {
    rule: once('GetDeviceId', 1),
    expected: (all) => all.slice(1),
    errors: [`Failed to get device ID for device at index 0: ${DENIED}`],
  },
  {
    rule: once('OpenPropertyStore'),
    expected: (all) => all.slice(1),
    warnings: [`Failed to open property store for device at index 0: ${DENIED}`],
  },
];
const MORE_IN_LISTS = [
  { rule: once('GetDeviceCount'), expected: () => [], errors: [`Failed to get device count: ${DENIED}`] },
  { rule: once('GetPropertyValue'), expected: ([first, ...others]) => [{ ...first, name: 'Unknown' }, ...others] },
];

/** The same rows with calls that succeed and give nothing. */
const givingNothing = (rows) =>
  rows.map(({ rule, errors = [], warnings = [], ...row }) => {
    const worded = (lines) => lines.map((text) => text.replace(ACCESS_DENIED, INVALID_POINTER));
    return { ...row, rule: rule.replace(ACCESS_DENIED, '0'), errors: worded(errors), warnings: worded(warnings) };
  });

/** Both lists before each call fails, meanwhile, and right after. */
async function listWithFaults(t, rules) {
  letSoundFail(t);
  const { value } = await scenario(
    ({ Brisolte, log, require: load }, given) => {
      const fs = load('node:fs');
      const capture = new Brisolte();
      return given.rules.flatMap((rule) =>
        ['getMicrophones', 'getSpeakers'].map((method) => {
          const before = capture[method]();
          fs.writeFileSync(given.faults, rule);
          const mark = log.mark();
          const list = capture[method]();
          const said = log.since(mark);
          fs.rmSync(given.faults);
          const lists = { before, list, next: capture[method]() };
          return { rule, method, ...lists, errors: said.errors, warnings: said.messages('WARNING') };
        }),
      );
    },
    { rules, faults: FAULTS_FILE },
  );
  return value;
}

async function startEach(t, rows) {
  const recordings = await recordSounds(t, { rules: rows.map(({ rule }) => rule), moments: ['start'] });
  rows.forEach(({ started = true, errors = [], warnings = [], sounds = 2 }, i) => {
    const { outcome } = recordings[i];
    assert.deepEqual([outcome.started, outcome.stopped, outcome.capturing], [started, started, false], told(outcome));
    assertLines(outcome.errors, errors, told(outcome));
    assertLines(outcome.warnings, warnings, told(outcome));
    assert.equal(started ? soundsOf(outcome.file).length : 0, sounds, told(outcome));
  });
}

test('the tables here leave none of the calls out', () => {
  const rows = [...AT_START, ...RUNNING, ...AT_STOP, ...IN_LISTS, ...MORE_IN_LISTS];
  const named = new Set(rows.map(({ rule }) => callOf(rule)));
  assert.deepEqual([...named].sort(), calls.toSorted());
});

test('a list is what can still be told of the devices, and the next one is complete', async (t) => {
  const rows = [...IN_LISTS, ...MORE_IN_LISTS, ...givingNothing(IN_LISTS)];
  const lists = await listWithFaults(t, rows.map(({ rule }) => rule)); // prettier-ignore
  for (const { rule, method, before, list, next, errors: seen, warnings: warned } of lists) {
    const { expected, errors = [], warnings = [] } = rows.find((row) => row.rule === rule);
    const what = `${rule}: ${method} said ${[...seen, ...warned].join('\n')}`;
    assert.ok(before.length > 1, what);
    assert.deepEqual(list, expected(before), what);
    assert.deepEqual(next, before, what);
    assertLines(seen, errors, what);
    assertLines(warned, warnings, what);
  }
});

test('a step that fails at the start has its texts and costs its own sound', (t) => startEach(t, AT_START));

test('a step that succeeds and gives nothing fails like one that does not', (t) => startEach(t, givingNothing(GIVING)));

test('a call that fails once in the middle costs no more than a moment of sound', async (t) => {
  const rules = RUNNING.map(({ rule }) => rule);
  const recordings = await recordSounds(t, { rules, moments: ['middle'], picturesAfter: 40 });
  RUNNING.forEach(({ errors = [] }, i) => {
    const { outcome } = recordings[i];
    assert.deepEqual([outcome.started, outcome.stopped, outcome.capturing], [true, true, false], told(outcome));
    assertLines(outcome.errors, errors, told(outcome));
    assertLines(outcome.warnings, [], told(outcome));
    const after = soundsAfterFault(recordings[i]);
    assert.ok(after.length === 2 && after.every((seconds) => seconds > 0), `${told(outcome)}: ${after}`);
  });
});

test('a call that fails at the stop costs nothing', async (t) => {
  const rules = [...RUNNING, ...AT_STOP].map(({ rule }) => rule);
  for (const { outcome } of await recordSounds(t, { rules, moments: ['stop'] })) {
    assert.deepEqual([outcome.started, outcome.stopped, outcome.capturing], [true, true, false], told(outcome));
    assert.equal(soundsOf(outcome.file).length, 2, told(outcome));
  }
});

test('a recording that runs makes none of the calls that set it up', async (t) => {
  const inUse = [...RUNNING, ...AT_STOP].map(({ rule }) => callOf(rule));
  const rule = calls.filter((call) => !inUse.includes(call)).map((call) => `${call} ${ACCESS_DENIED}`).join('\r\n'); // prettier-ignore
  for (const { outcome } of await recordSounds(t, { rules: [rule], moments: ['middle', 'stop'] })) {
    const { started, stopped, errors, warnings } = outcome;
    assert.deepEqual([started, stopped, errors, warnings], [true, true, [], []], told(outcome));
    assert.equal(soundsOf(outcome.file).length, 2, told(outcome));
  }
});

test('a device that is lost in mid-recording ends its own sound alone', async (t) => {
  const titles = ['Microphone', 'Speaker'];
  const lost = titles.flatMap((title) => ['GetNextPacketSize', 'GetCaptureBuffer'].map((call) => ({ title, call })));
  const rules = lost.map(({ title, call }) => `${title.toLowerCase()}:${call} ${DEVICE_INVALIDATED}`);
  const recordings = await recordSounds(t, { rules, moments: ['middle'], pictures: 30, picturesAfter: 60 });
  lost.forEach(({ title }, i) => {
    const { outcome } = recordings[i];
    assert.deepEqual([outcome.started, outcome.stopped, outcome.errors], [true, true, []], told(outcome));
    assertLines(outcome.warnings, [`${title} device is gone, its sound ends here: HRESULT: ${DEVICE_INVALIDATED}`], told(outcome));
    const after = soundsAfterFault(recordings[i]);
    const [ended, other] = title === 'Microphone' ? after : after.toReversed();
    assert.ok(ended < 0.2 && other > 0.2, `${told(outcome)}: ${after}`);
  });
});
