// Makes the package's one file in build/package and tells what is in it: node tools/package.mjs [--lgpl [--test]] [--prepare]
//
// --lgpl makes one with an FFmpeg under the LGPL in build/package-lgpl, and --test tests it. --prepare stops before packing, for npm pack, which does
// that itself.

import { parseArgs } from 'node:util';
import { purposeOf } from './package/natives.mjs';
import { pack, prepare } from './package/pack.mjs';
import { testLgplPackage } from './test/lgpl-package.mjs';
import { main, step, WorkshopError } from './workshop/report.mjs';

const megabytes = (bytes) => `${(bytes / 1e6).toFixed(2)} MB`;
const kilobytes = (bytes) => `${(bytes / 1e3).toFixed(1)} kB`;

await main(async () => {
  const option = { type: 'boolean', default: false };
  const { values } = parseArgs({ options: { lgpl: option, prepare: option, test: option } });
  if (values.test && !values.lgpl) {
    throw new WorkshopError('--test is for the package with --lgpl; npm test tests the other');
  }
  const licence = values.lgpl ? 'lgpl' : 'gpl';
  await step('Module, libraries and licences', prepare);
  if (values.prepare) {
    return 0;
  }
  const packed = await step('Packing', () => pack(licence));
  show(packed, licence);
  return values.test ? testLgplPackage(packed) : 0;
});

function show({ tarball, size, unpackedSize, files, symbols }, licence) {
  const natives = files.filter(({ path }) => purposeOf(path)).sort((a, b) => b.size - a.size);
  const others = files.filter(({ path }) => !purposeOf(path));
  console.log(`\n${tarball}\n${megabytes(size)}, installed ${megabytes(unpackedSize)}, ${files.length} files\n`);
  natives.forEach((file) => console.log(`${megabytes(file.size).padStart(10)}  ${file.path}\n${' '.repeat(12)}${purposeOf(file.path, licence)}`));
  console.log(`\nSymbols, not in the package: ${symbols.map(({ path, size: bytes }) => `${path}, ${megabytes(bytes)}`).join('; ')}\n`);
  others.forEach((file) => console.log(`${kilobytes(file.size).padStart(10)}  ${file.path}`));
}
