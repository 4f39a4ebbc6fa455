'use strict';

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { LIMITS, PARAMETERS, SIDES_MISSING } = require('./support/documented');
const { loadSilently } = require('./support/package');

const Brisolte = loadSilently();

const RANGES = {
  setMode: {
    good: [-1, 0, 1, 2, 0.9, -1.9, 2.9, NaN, Infinity, 2 ** 32 + 1],
    bad: [-2, 3, 4, 100, -100, 2 ** 31 - 1, -(2 ** 31), 2 ** 31],
  },
  setFrameRate: {
    good: [1, 30, 120, 120.9, 1.5],
    bad: [0, 121, -1, 0.9, NaN, Infinity, -Infinity, 2 ** 31 - 1, -(2 ** 31)],
  },
  setBitrate: {
    good: [100000, 50000000, 50000000.9],
    bad: [99999, 50000001, 0, -1, 99999.9, NaN, Infinity, 2 ** 31 - 1, -(2 ** 31)],
  },
};

const KINDS = {
  'a missing argument': { type: 'none', value: [] },
  undefined: { type: 'undefined', value: [undefined] },
  null: { type: 'null', value: [null] },
  'a number': { type: 'number', value: [1] },
  'a numeric string': { type: 'string', value: ['1'] },
  'an empty string': { type: 'string', value: [''] },
  true: { type: 'boolean', value: [true] },
  'an object': { type: 'object', value: [{}] },
  'an array': { type: 'object', value: [[1]] },
  'a String object': { type: 'object', value: [new String('1')] },
  'a Number object': { type: 'object', value: [new Number(1)] },
  'a Boolean object': { type: 'object', value: [new Boolean(true)] },
  'a date': { type: 'object', value: [new Date()] },
  'a function': { type: 'function', value: [() => 1] },
  'a symbol': { type: 'symbol', value: [Symbol('s')] },
  'a big integer': { type: 'bigint', value: [1n] },
};

// A plain Error, no subclass, with exactly this text.
const plainError = (text) => (error) => {
  assert.equal(error.constructor, Error);
  assert.equal(error.message, text);
  return true;
};

for (const [method, [type, text]] of Object.entries(PARAMETERS)) {
  test(`${method} takes nothing but ${type === 'object' ? 'an' : 'a'} ${type}`, () => {
    const instance = new Brisolte();
    // A function has properties too, and passes where an object is asked for.
    const passes = (kind) => kind === type || (type === 'object' && kind === 'function');
    for (const [name, kind] of Object.entries(KINDS).filter(([, { type: kind }]) => !passes(kind))) {
      assert.throws(() => instance[method](...kind.value), plainError(text), name);
    }
    assert.throws(() => instance[method](undefined, 1, 'x', true, {}), plainError(text), 'only the first counts');
  });
}

for (const [method, { good, bad }] of Object.entries(RANGES)) {
  const [, , text] = LIMITS[method];
  test(`${method} takes only its range`, () => {
    const instance = new Brisolte();
    good.forEach((value) => assert.equal(instance[method](value), true, String(value)));
    bad.forEach((value) => assert.throws(() => instance[method](value), plainError(text), String(value)));
    assert.equal(instance[method](good[0], 'further', 'arguments'), true);
  });
}

test('setLogLevel takes only its range and returns nothing', () => {
  const instance = new Brisolte();
  const [, , text] = LIMITS.setLogLevel;
  for (const level of [-1, 6, 100, 2 ** 31 - 1, -(2 ** 31)]) {
    assert.throws(() => instance.setLogLevel(level), plainError(text), String(level));
    assert.equal(instance.getLogLevel(), 5, 'a refused level changes nothing');
  }
  for (const level of [4, 3, 5, 5.9]) {
    assert.equal(instance.setLogLevel(level), undefined);
    assert.equal(instance.getLogLevel(), Math.trunc(level));
  }
});

test('setRegion needs all four sides', () => {
  const instance = new Brisolte();
  const whole = { left: 0, top: 0, width: 100, height: 100 };
  for (const side of Object.keys(whole)) {
    const region = { ...whole };
    delete region[side];
    assert.throws(() => instance.setRegion(region), plainError(SIDES_MISSING), side);
  }
  for (const region of [{}, [], [1, 2, 3, 4], () => 1, new Date(), new Map()]) {
    assert.throws(() => instance.setRegion(region), plainError(SIDES_MISSING));
  }
});

test('setRegion takes any four numbers', () => {
  const instance = new Brisolte();
  const region = (left, top, width, height) => ({ left, top, width, height });
  const most = 2 ** 31 - 1;
  const regions = [
    region(0, 0, 0, 0),
    region(-1, -1, -1, -1),
    region(most, most, most, most),
    region(-most - 1, -most - 1, most, most),
    region(1.5, NaN, Infinity, 2 ** 40),
  ];
  regions.forEach((each) => assert.equal(instance.setRegion(each), true));
  assert.equal(instance.setRegion(Object.assign(() => 1, region(1, 2, 3, 4))), true, 'a function with the sides');
  assert.equal(instance.setRegion(Object.create(region(1, 2, 3, 4))), true, 'inherited sides');
  assert.equal(instance.setRegion({ ...region(1, 2, 3, 4), more: 1 }), true, 'more than the sides');
});

test('setRegion refuses sides that are no numbers', () => {
  const instance = new Brisolte();
  for (const value of ['1', null, undefined, true, {}, Symbol('s'), 1n]) {
    assert.throws(() => instance.setRegion({ left: 0, top: 0, width: 100, height: value }), Error);
  }
});

test('setRegion reads the sides in their order and passes on what reading throws', () => {
  const instance = new Brisolte();
  const read = [];
  const region = Object.defineProperties(
    {},
    Object.fromEntries(
      ['height', 'width', 'top', 'left'].map((side) => [side, { get: () => read.push(side), enumerable: true }]),
    ),
  );
  assert.equal(instance.setRegion(region), true);
  assert.deepEqual(read, ['left', 'top', 'width', 'height']);

  const failure = new RangeError('from a getter');
  const broken = { left: 0, top: 0, width: 100, get height() { throw failure; } }; // prettier-ignore
  assert.throws(() => instance.setRegion(broken), (error) => error === failure);
  const trap = new Proxy({}, { has() { throw failure; } }); // prettier-ignore
  assert.throws(() => instance.setRegion(trap), (error) => error === failure);
  assert.equal(instance.setFrameRate(30), true, 'the instance still works');
});

test('a getter of the region may call the instance', () => {
  const instance = new Brisolte();
  const region = { left: 0, top: 0, width: 100, get height() { return instance.setFrameRate(10) ? 100 : 0; } }; // prettier-ignore
  assert.equal(instance.setRegion(region), true);
});

test('setters without a range take every number', () => {
  const instance = new Brisolte();
  for (const value of [0, -1, 99, 1.5, NaN, Infinity, -Infinity, 2 ** 31, 2 ** 53, 2 ** 64, -(2 ** 64)]) {
    assert.equal(instance.setMonitor(value), true, String(value));
    assert.equal(instance.setWindow(value), true, String(value));
  }
});

test('setAudioBitrate takes positive numbers only', () => {
  const instance = new Brisolte();
  [1, 128000, 2 ** 31 - 1, 1.9].forEach((value) => assert.equal(instance.setAudioBitrate(value), true, String(value)));
  [0, -5, 0.9, NaN, Infinity, 2 ** 31].forEach((value) =>
    assert.equal(instance.setAudioBitrate(value), false, String(value)),
  );
});

test('text setters take every text', () => {
  const instance = new Brisolte();
  for (const text of ['', 'x', 'ü 漢字 🎬', 'a\0b', '\ud800', 'x'.repeat(100000), '%s%n', '../..']) {
    for (const method of ['setEncoder', 'setMicrophoneDevice', 'setSpeakerDevice']) {
      assert.equal(instance[method](text), true, method);
    }
    assert.equal(instance.setMonitorByName(text), false);
  }
});

test('boolean setters take both', () => {
  const instance = new Brisolte();
  for (const method of ['setCursorCapture', 'setBorderHighlight']) {
    [true, false].forEach((value) => assert.equal(instance[method](value), true, method));
  }
});

test('methods without parameters ignore arguments', () => {
  const instance = new Brisolte();
  const words = [Symbol('s'), null, { left: 1 }];
  assert.equal(instance.isCapturing(...words), false);
  assert.equal(instance.stopRecord(...words), false);
  assert.equal(instance.getSaveFilePath(...words), '');
  assert.equal(instance.getLogLevel(...words), 5);
  for (const method of ['getMonitors', 'getWindows', 'getMicrophones', 'getSpeakers', 'getSupportVideoCodec']) {
    assert.ok(Array.isArray(instance[method](...words)), method);
  }
});
