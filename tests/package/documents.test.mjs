// What the pages of the repository name is there: pages, commands, tests, and how many methods there are.

import assert from 'node:assert/strict';
import { existsSync, readdirSync, readFileSync } from 'node:fs';
import { basename, dirname, join } from 'node:path';
import { test } from 'node:test';
import { treeDir } from '../../tools/workshop/tree.mjs';
import support from '../js/support/package.js';

const { BRISOLTE_PACKAGE: folder } = process.env;

const pagesIn = (place) => [
  ...readdirSync(place).filter((name) => name.endsWith('.md')),
  ...readdirSync(join(place, 'docs')).map((name) => `docs/${name}`),
];
const ofUsers = pagesIn(folder);
const pages = pagesIn(treeDir);
const read = (place, page) => readFileSync(join(place, page), 'utf8');

/** All that a pattern's first group finds in pages, with the page. */
const named = (pattern, from = pages, place = treeDir) =>
  from.flatMap((page) => [...read(place, page).matchAll(pattern)].map(([, name]) => ({ page, name })));

/** The names of a page's headings as links have them. */
const anchorsOf = (text) =>
  [...text.matchAll(/^#+ (.*)$/gm)].map(([, title]) => title.toLowerCase().replace(/[^\p{L}\p{N} _-]/gu, '').replaceAll(' ', '-'));

function brokenLinks(place, from) {
  const links = named(/\]\(([^)\s]+)\)/g, from, place).filter(({ name }) => !/^https?:/.test(name));
  assert.ok(links.length > 0);
  return links.filter(({ page, name }) => {
    const [target, anchor] = name.split('#');
    const file = target === '' ? join(place, page) : join(place, dirname(page), target);
    return !existsSync(file) || (anchor !== undefined && !anchorsOf(readFileSync(file, 'utf8')).includes(anchor));
  });
}

test('every link of the pages leads somewhere', () => {
  assert.deepEqual(brokenLinks(treeDir, pages), []);
});

test('every link of the pages in the package leads somewhere in the package', () => {
  // What is for those who work on the package is in its repository only.
  const broken = brokenLinks(folder, ofUsers).filter(({ page, name }) => !(page === 'README.md' && name === 'CONTRIBUTING.md'));
  assert.deepEqual(broken, []);
});

test('what only contributors need is not in the package', () => {
  const left = pages.filter((page) => !ofUsers.includes(page));
  assert.deepEqual(left, ['CONTRIBUTING.md', 'docs/coverage.md', 'docs/media-foundation-calls.md', 'docs/performance.md']);
});

test('every command of the pages is there', () => {
  const { scripts, version } = JSON.parse(read(treeDir, 'package.json'));
  assert.deepEqual(named(/npm run ([\w-]+)/g).filter(({ name }) => !(name in scripts)), []);
  assert.deepEqual(named(/\bnode (tools\/[\w/.-]+)/g).filter(({ name }) => !existsSync(join(treeDir, name))), []);
  assert.deepEqual(named(/node_modules\/brisolte\/(examples\/[\w.-]+)/g).filter(({ name }) => !existsSync(join(folder, name))), []);
  const examples = readdirSync(join(treeDir, 'examples')).map((name) => `examples/${name}`);
  const versions = named(/\bbrisolte-(\d+\.\d+\.\d+)/g, [...pages, ...examples]);
  assert.deepEqual(versions.filter(({ name }) => name !== version), []);
});

test('every test and every file of the tree that the pages name is there', () => {
  const tests = readdirSync(join(treeDir, 'tests'), { recursive: true }).map((name) => basename(name));
  const unknown = named(/`([\w.-]+(?:_test\.cpp|\.test\.m?js))`/g).filter(({ name }) => !tests.includes(name));
  assert.deepEqual(unknown, []);
  const missing = named(/`((?:tests|tools|examples|src)\/[\w./-]+)`/g).filter(({ name }) => !existsSync(join(treeDir, name)));
  assert.deepEqual(missing, []);
});

// The words of Windows, Node.js and the C++ runtime.
const OF_OTHERS = [
  "Cannot find module './prebuilds/win32-x64/brisolte.node'",
  'The specified module could not be found',
  'The specified procedure could not be found',
  'filesystem error: status:',
];

test('the lines and texts that errors.md explains are those of the code', () => {
  const inFolder = (folder) => readdirSync(join(treeDir, folder), { recursive: true }).map((name) => join(folder, name));
  const files = [...inFolder('src'), ...inFolder('lib'), 'index.js'].filter((name) => /\.(cpp|h|js)$/.test(name));
  // A text that is too long for a line is in two.
  const code = files.map((name) => read(treeDir, name).replaceAll(/"\s*"/g, '')).join('\n');
  const [, ...tables] = read(treeDir, 'docs/errors.md').split(/^\| (?:line|text) \|.*\n.*\n/m);
  const cells = tables.flatMap((table) => [...table.split('\n\n')[0].matchAll(/^\| ([^|]+) \|/gm)].map(([, cell]) => cell));
  const texts = cells.flatMap((cell) => cell.split(/, (?=[A-Z])/));
  assert.ok(texts.length > 60, `${texts.length}`);
  // Who says it, and which device it is about, is put before such a text.
  const parts = texts.flatMap((text) => text.replace(/^(Microphone|Speaker|FFmpegEncoder:) /, '').split('…'));
  const unknown = parts.map((part) => part.trim()).filter((part) => !code.includes(part) && !OF_OTHERS.includes(part));
  assert.deepEqual(unknown, []);
});

test('the pages know how many methods there are', () => {
  const counts = named(/\ball (\d+) methods\b/g);
  assert.ok(counts.length > 1);
  assert.deepEqual(counts.filter(({ name }) => Number(name) !== support.METHODS.length), []);
});
