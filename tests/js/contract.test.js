'use strict';

// The class of the main entry keeps what it does, whatever the module of recorders learns: recordings of it are compared with
// those that it made before there was another.

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { RECORDINGS, differences, recorded } = require('./support/contract');
const KNOWN = require('./support/contract.json');

for (const name of Object.keys(RECORDINGS)) {
  test(`the log and the file are what they were: ${name}`, async (t) => {
    const found = await recorded(t, name);
    assert.deepEqual(differences(found.log, KNOWN[name].log), { missing: [], strange: [] });
    assert.deepEqual(found.file, KNOWN[name].file);
  });
}
