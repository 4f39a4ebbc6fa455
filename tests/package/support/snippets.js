'use strict';

// What readers copy out of the pages of the package.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { packageFolder } = require('../../js/support/package');
const { scratchFolder } = require('../../js/support/scratch');

/** The pages that users have. */
const pages = ['README.md', ...fs.readdirSync(path.join(packageFolder, 'docs')).map((name) => `docs/${name}`)];

/** The blocks of a page in one language, without the indentation of a list that they are in. */
function blocksOf(page, language) {
  const text = fs.readFileSync(path.join(packageFolder, page), 'utf8');
  const blocks = text.matchAll(/^( *)```(\w*)\n([^]*?)^\1```$/gm);
  return [...blocks].filter(([, , named]) => named === language).map(([, indentation, , code]) => code.replaceAll(new RegExp(`^${indentation}`, 'gm'), ''));
}

/** A folder of a user's own with the package installed. */
function projectFolder() {
  const folder = scratchFolder();
  fs.cpSync(packageFolder, path.join(folder, 'node_modules', 'brisolte'), { recursive: true });
  // Without it Deno looks for nothing in node_modules.
  fs.writeFileSync(path.join(folder, 'package.json'), '{ "private": true, "dependencies": { "brisolte": "*" } }\n');
  return folder;
}

/**
 * Puts the programs of a page as they stand there into a folder: 1.cjs, 2.mjs and so on, by whether they import.
 * @returns {string[]} their names
 */
function copyPrograms(page, folder) {
  const programs = blocksOf(page, 'js');
  return programs.map((code, i) => {
    const name = `${i + 1}.${/^import /m.test(code) ? 'mjs' : 'cjs'}`;
    fs.writeFileSync(path.join(folder, name), code);
    return name;
  });
}

/** The programs that the README shows, each in a folder of a user's own with the package installed. */
function programsOfReadme() {
  const programs = blocksOf('README.md', 'js');
  assert.equal(programs.length, 2);
  return programs.map((code) => {
    const cwd = projectFolder();
    fs.writeFileSync(path.join(cwd, 'first.cjs'), code);
    return cwd;
  });
}

module.exports = { blocksOf, copyPrograms, pages, programsOfReadme, projectFolder };
