'use strict';

// Loaded before a program, this lets it require scripts of asar archives, as Electron does; nothing else is to be had of them.

const fs = require('node:fs');
const Module = require('node:module');
const path = require('node:path');

// An archive begins with three lengths that are of no use here, that of its index, and the index.
const INDEX_AT = 16;

/** A script of an archive, or undefined. */
function scriptOf(file) {
  const [, archive, within] = /^(.*\.asar)[\\/](.*)$/.exec(file) ?? [];
  if (!archive) {
    return undefined;
  }
  const bytes = fs.readFileSync(archive);
  const { files } = JSON.parse(bytes.toString('utf8', INDEX_AT, INDEX_AT + bytes.readUInt32LE(12)));
  const found = within.split(path.sep).reduce((entry, name) => entry?.files?.[name], { files });
  const start = 8 + bytes.readUInt32LE(4) + Number(found?.offset);
  return found?.size === undefined ? undefined : bytes.toString('utf8', start, start + found.size);
}

const { _resolveFilename: resolve, _findPath: findPath } = Module;
const compile = Module._extensions['.js'];
const isThere = (file) => scriptOf(file) !== undefined;

Module._findPath = (request, paths, isMain) => (isThere(request) ? request : findPath(request, paths, isMain));
Module._resolveFilename = (request, parent, ...others) => {
  const whole = path.resolve(path.dirname(parent?.filename ?? ''), request);
  return [whole, `${whole}.js`, path.join(whole, 'index.js')].find(isThere) ?? resolve(request, parent, ...others);
};
Module._extensions['.js'] = (module, file) => (isThere(file) ? module._compile(scriptOf(file), file) : compile(module, file));
