'use strict';

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { openPattern } = require('./support/desktop');
const { scenario } = require('./support/scenario');
const { scratchFile, scratchFolder } = require('./support/scratch');

// What setOutputDir answers and logs for each text.
const tryDirectories = ({ Brisolte, log }, { texts }) => {
  const capture = new Brisolte();
  return texts.map((text) => {
    const mark = log.mark();
    const answer = capture.setOutputDir(text);
    return { answer, entries: log.since(mark).entries };
  });
};

test('setOutputDir takes existing directories, in any script', async () => {
  const folder = scratchFolder();
  const names = ['plain', 'with blank', 'Ümläut', '漢字', 'кириллица', 'emoji 🎬', 'a.mp4', "quote's"];
  const texts = names.map((name) => path.join(folder, name));
  texts.forEach((text) => fs.mkdirSync(text));
  texts.push(`${folder}\\`, folder.replaceAll('\\', '/'), '.', '..');
  const { value } = await scenario(tryDirectories, { texts });
  assert.deepEqual(
    value,
    texts.map((text) => ({ answer: true, entries: [{ level: 'INFO', message: `Output directory set to: ${text}` }] })),
  );
});

test('setOutputDir refuses what is no directory', async () => {
  const file = scratchFile('txt');
  fs.writeFileSync(file, 'x');
  const texts = ['', file, `${file}.missing`, 'C:\\no\\such\\folder', 'Q:\\', '漢字'];
  const { value } = await scenario(tryDirectories, { texts });
  const refusal = (text) => [{ level: 'ERROR', message: `Invalid or non-existent output directory: ${text}` }];
  assert.deepEqual(value, texts.map((text) => ({ answer: false, entries: refusal(text) })));
});

test('setOutputDir survives texts that cannot be paths', async () => {
  const { value } = await scenario(({ Brisolte }) => {
    const capture = new Brisolte();
    const answers = ['\0', 'a\0b', '\ud800', 'x'.repeat(70000), '?', '<>|', 'con', '::', '\\\\?\\', '\\\\nohost\\x'].map((text) => {
      try {
        return capture.setOutputDir(text);
      } catch (error) {
        return error.constructor === Error && error.message.includes('status');
      }
    });
    return { answers, after: capture.setOutputDir(process.cwd()) };
  });
  assert.equal(value.answers.length, 10);
  assert.ok(value.answers.every((answer) => typeof answer === 'boolean'));
  assert.equal(value.after, true);
});

test('a refused directory leaves the one before', async () => {
  const dir = scratchFolder();
  const { value } = await scenario(
    ({ Brisolte }, given) => {
      const capture = new Brisolte();
      const answers = [capture.setOutputDir(given.dir), capture.setOutputDir(`${given.dir}\\missing`)];
      capture.setMode(-1);
      answers.push(capture.startRecord(), capture.stopRecord());
      return { answers, file: capture.getSaveFilePath() };
    },
    { dir },
  );
  assert.deepEqual(value.answers, [true, false, true, true]);
  assert.equal(path.dirname(value.file), dir);
});

test('refused audio bit rates are logged', async () => {
  const { value, log } = await scenario(({ Brisolte }) => {
    const capture = new Brisolte();
    return [0, -5, 1].map((rate) => capture.setAudioBitrate(rate));
  });
  assert.deepEqual(value, [false, false, true]);
  assert.deepEqual(log.errors, ['Invalid audio bitrate', 'Invalid audio bitrate']);
});

test('the last target that was set is recorded', async (t) => {
  const window = await openPattern(t, { title: 'Target', x: 100, y: 80, width: 400, height: 200 });
  const sizes = { window: '400x200', region: '320x240' };
  const { value } = await scenario(
    ({ Brisolte, log }, { dir, handle }) => {
      const [monitor] = new Brisolte().getMonitors();
      const region = { left: monitor.rect.left, top: monitor.rect.top, width: 320, height: 240 };
      const orders = [
        [],
        [['setRegion', region], ['setWindow', handle]],
        [['setWindow', handle], ['setMonitor', 0]],
        [['setWindow', handle], ['setMonitorByName', monitor.name]],
        [['setWindow', handle], ['setRegion', region]],
        [['setWindow', handle], ['setMonitor', 0], ['setMode', 1]],
        [['setRegion', region], ['setMonitor', 0], ['setMode', 2]],
        [['setRegion', region], ['setMode', 0]],
        [['setWindow', handle], ['setMonitorByName', monitor.name.toLowerCase()]],
        [['setMode', 2]],
      ];
      const dimensions = orders.map((calls) => {
        const capture = new Brisolte();
        capture.setOutputDir(dir);
        calls.forEach(([method, value]) => capture[method](value));
        const mark = log.mark();
        const answers = [capture.startRecord(), capture.stopRecord()];
        const line = log.since(mark).text.match(/Capture dimensions set to: (\d+x\d+)/);
        return answers.every(Boolean) ? line?.[1] : answers;
      });
      const even = (length) => length + (length % 2);
      return { dimensions, screen: `${even(monitor.rect.width)}x${even(monitor.rect.height)}` };
    },
    { dir: scratchFolder(), handle: window.handle },
  );
  assert.deepEqual(value.dimensions, [
    value.screen,
    sizes.window,
    value.screen,
    value.screen,
    sizes.region,
    sizes.window,
    sizes.region,
    value.screen,
    sizes.window,
    value.screen,
  ]);
});
