'use strict';

/** What runs modules of Node.js: the name of each, its program, and the words that come before a script. */
const hosts = process.env.BRISOLTE_HOSTS
  ? JSON.parse(process.env.BRISOLTE_HOSTS)
  : [{ name: `Node.js ${process.versions.node}`, program: process.execPath, words: [] }];

module.exports = { hosts };
