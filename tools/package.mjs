// Makes the package's one file in build/package and tells what is in it: node tools/package.mjs [--prepare]
// --prepare stops before packing, for npm pack, which does that itself.

import { parseArgs } from 'node:util';
import { purposeOf } from './package/natives.mjs';
import { pack, prepare } from './package/pack.mjs';
import { main, step } from './workshop/report.mjs';

const megabytes = (bytes) => `${(bytes / 1e6).toFixed(2)} MB`;
const kilobytes = (bytes) => `${(bytes / 1e3).toFixed(1)} kB`;

await main(async () => {
  const { values } = parseArgs({ options: { prepare: { type: 'boolean', default: false } } });
  await step('Module, libraries and licences', prepare);
  if (!values.prepare) {
    show(await step('Packing', pack));
  }
});

function show({ tarball, size, unpackedSize, files, symbols }) {
  const natives = files.filter(({ path }) => purposeOf(path)).sort((a, b) => b.size - a.size);
  const others = files.filter(({ path }) => !purposeOf(path));
  console.log(`\n${tarball}\n${megabytes(size)}, installed ${megabytes(unpackedSize)}, ${files.length} files\n`);
  natives.forEach((file) => console.log(`${megabytes(file.size).padStart(10)}  ${file.path}\n${' '.repeat(12)}${purposeOf(file.path)}`));
  console.log(`\nSymbols, not in the package: ${symbols.path}, ${megabytes(symbols.size)}\n`);
  others.forEach((file) => console.log(`${kilobytes(file.size).padStart(10)}  ${file.path}`));
}
