'use strict';

// Tells the stand-ins which calls are to fail; see tests/standins/README.md.

const assert = require('node:assert/strict');
const { spawnSync } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');
const { scratchFile } = require('./scratch');

const FAULTS_FILE = 'C:\\standin-faults.txt';
const ACCESS_DENIED = '0x80070005';
const DENIED_TEXT = /HRESULT: 0x80070005/;

const COM_FAULTS = 'C:\\standins\\com_faults.dll';
const SOUND = '{BCDE0395-E52F-467C-8E3D-C4579291692E}';
const IMAGING = '{CACAF262-9370-4615-A13B-9F5539DA4C0A}';

const README = path.join(__dirname, '..', '..', 'standins', 'README.md');

/** Every call that the stand-ins' own table under this heading names. */
function failingCalls(heading) {
  const [, section] = fs.readFileSync(README, 'utf8').split(`\n### ${heading}\n`);
  const rows = section.split('\n#')[0].match(/^\| `.*?\|/gm);
  return rows.flatMap((row) => [...row.matchAll(/`(\w+)`/g)].map(([, name]) => name));
}

function registry(...words) {
  assert.equal(spawnSync('reg', words, { stdio: 'ignore' }).status, 0, `reg ${words.join(' ')}`);
}

/** For the time of a test, new processes get a class of the system from the stand-in that lets its calls fail. */
function letFail(t, clsid) {
  const key = `HKLM\\Software\\Classes\\CLSID\\${clsid}\\InprocServer32`;
  const saved = scratchFile('reg');
  registry('export', key, saved, '/y');
  registry('add', key, '/ve', '/d', COM_FAULTS, '/f');
  t.after(() => registry('import', saved));
}

const letSoundFail = (t) => letFail(t, SOUND);
const letImagingFail = (t) => letFail(t, IMAGING);

module.exports = { ACCESS_DENIED, DENIED_TEXT, FAULTS_FILE, failingCalls, letImagingFail, letSoundFail };
