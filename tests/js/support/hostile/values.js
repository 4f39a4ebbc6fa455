'use strict';

// What callers pass: what the methods are made for, and everything else that JavaScript has.

const region = (left, top, width, height) => ({ left, top, width, height });

const NUMBERS = [
  ...[0, -0, 1, -1, 2, -2, 3, 5, 6, 0.5, -0.5, 1.5, 30, 119.9, 120, 121, 99999, 100000, 50000000, 50000001],
  ...[2 ** 31 - 1, 2 ** 31, -(2 ** 31), -(2 ** 31) - 1, 2 ** 32, 2 ** 32 + 1, 2 ** 53, 2 ** 63, 2 ** 64, -(2 ** 64)],
  ...[1e300, -1e300, NaN, Infinity, -Infinity, Number.MIN_VALUE],
];

const TEXTS = [
  ...['', ' ', 'nonesuch', 'LIBX264', '%s%n%p', 'ü 漢字 🎬', 'a\0b', '\0', '\ud800', '\udfff\ud800', '\r\n[ERROR] x'],
  ...['{0.0.0.00000000}.{00000000-0000-0000-0000-000000000000}', 'x'.repeat(300), 'ü'.repeat(40000)],
];

// Paths at which nothing can be written, and no directory is.
const BAD_PATHS = [
  ...['', '\0', 'C:\\nonesuch\\a', '\\\\?\\', '\\\\.\\nonesuch', '\\\\nonesuch\\share\\x', 'Q:\\x', 'x:y:z', '<>|?*'],
  ...['C:\\windows\\system32\\kernel32.dll\\x', `C:\\${'x'.repeat(400)}\\y`, '\ud800\\x'],
];

function revoked() {
  const { proxy, revoke } = Proxy.revocable({}, {});
  revoke();
  return proxy;
}

const thrower = () => {
  throw new RangeError('thrown by the caller');
};

// By the name that a failure is told with. Objects are made anew for each call.
const OTHERS = {
  undefined: () => undefined,
  null: () => null,
  'a symbol': () => Symbol('s'),
  'a big integer': () => 2n ** 70n,
  '{}': () => ({}),
  '[]': () => [],
  'a function': () => () => 1,
  'a String object': () => new String('x'),
  'a Number object': () => new Number(1),
  'a date': () => new Date(0),
  'an object that turns into a number': () => ({ valueOf: () => 1, toString: () => '1', [Symbol.toPrimitive]: () => 1 }),
  'an object without a prototype': () => Object.create(null),
  'a detached buffer': () => {
    const buffer = new ArrayBuffer(8);
    structuredClone(buffer, { transfer: [buffer] });
    return buffer;
  },
};

// By what setRegion makes of them.
const REGIONS = {
  whole: {
    'a region': () => region(0, 0, 64, 48),
    'a region of odd size': () => region(10, 20, 101, 57),
    'a region that reaches beyond the monitor': () => region(-20, -20, 96, 80),
    'a region without an area': () => region(0, 0, 0, 0),
    'a region of negative size': () => region(50, 50, -10, -10),
    'a region far away': () => region(2 ** 31 - 1, 2 ** 31 - 1, 2 ** 31 - 1, 2 ** 31 - 1),
    'a region larger than any texture': () => region(0, 0, 2 ** 31 - 1, 100),
    'a region of strange numbers': () => region(NaN, Infinity, 2 ** 40, 0.5),
    'an inherited region': () => Object.create(region(0, 0, 64, 48)),
    'a function with sides': () => Object.assign(() => 1, region(0, 0, 64, 48)),
    'a proxy that has everything': () => new Proxy({}, { has: () => true, get: () => 32 }),
    ...reentrant('a region whose getter stops the recording', 'stopRecord'),
    ...reentrant('a region whose getter starts a recording', 'startRecord'),
    ...reentrant('a region whose getter sets another', 'setRegion', 'a region'),
  },
  lacking: { 'a region that lacks a side': () => ({ left: 0, top: 0, width: 10 }) },
  unreadable: {
    'a region of texts': () => region('0', '0', '64', '48'),
    'a region of undefined': () => region(undefined, undefined, undefined, undefined),
    'a region of big integers': () => region(0n, 0n, 64n, 48n),
    'a region whose getter throws': () => Object.defineProperty(region(0, 0, 64, 48), 'top', { get: thrower }),
    'a proxy that throws': () => new Proxy({}, { has: thrower, get: thrower }),
    'a revoked proxy': revoked,
  },
};

// The getter runs while setRegion does. `call` is how the caller makes its own calls.
function reentrant(name, method, argument) {
  const argumentOf = () => (argument ? [valueNamed(argument)] : []);
  const getter = (call) => ({ get: () => (call(method, argumentOf()), 64), enumerable: true });
  return { [name]: (call) => Object.defineProperty(region(0, 0, 64, 48), 'width', getter(call)) };
}

const listed = (makers, asRegion) => Object.entries(makers).map(([name, make]) => ({ name, make, asRegion }));
const plain = (name, value) => ({ name, make: () => value });
const number = (value) => plain(Object.is(value, -0) ? '-0' : String(value), value);
const text = (value) => plain(JSON.stringify(value.slice(0, 40)), value);

/** Values as { name, make, asRegion }: what a failure calls them, what makes one, and what it is as a region. */
const regions = Object.entries(REGIONS).flatMap(([kind, makers]) => listed(makers, kind));
const numbers = NUMBERS.map(number);
const texts = TEXTS.map(text);
const badPaths = BAD_PATHS.map(text);
const booleans = listed({ true: () => true, false: () => false });

/** Everything that is passed where something else is asked for. */
const anything = [...listed(OTHERS, 'lacking'), ...booleans, ...numbers, ...texts, ...regions];

function valueNamed(name) {
  return anything.find((value) => value.name === name);
}

module.exports = { anything, badPaths, booleans, number, numbers, regions, text, texts };
