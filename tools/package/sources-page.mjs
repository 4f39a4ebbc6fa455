// The page of the package that tells from which sources its native files were built, so that whoever has the files can have those.

import { existsSync, readFileSync } from 'node:fs';
import { join } from 'node:path';
import { codecsUnder, patchedSource, sourceList, toolchain } from '../workshop/ffmpeg.mjs';
import { outputOf } from '../workshop/processes.mjs';
import { treeDir } from '../workshop/tree.mjs';

/** The names of the patches that a source's own list has, in their order. */
export function patchesOf(source) {
  const series = join(source, 'debian', 'patches', 'series');
  const lines = existsSync(series) ? readFileSync(series, 'utf8').split('\n') : [];
  return lines.map((line) => line.replace(/\s*#.*/, '').split(/\s/)[0]).filter(Boolean);
}

/** The page's text for the package with FFmpeg under this licence. */
export async function sourcesPage(licence) {
  const sections = await Promise.all(['ffmpeg', ...codecsUnder[licence]].map(section));
  return `# Where the native files come from

\`brisolte.node\` and \`recorder.node\` are built from the folder \`src\` of Brisolte's repository, the FFmpeg libraries beside it from the sources below, by the
recipes in its folder \`tools/workshop/recipes\`${commit()}. The files are those of Debian's archive, at
<https://deb.debian.org/debian/pool/main> and, when Debian has replaced them, at <https://snapshot.debian.org>.

${sections.join('\n')}
## Compiler

What of these gets into the files is built by Debian, too: ${(await toolchain()).join(', ')}.
`;
}

async function section(name) {
  const files = sourceList.filter((each) => each.name === name);
  const patches = patchesOf(await patchedSource(name));
  const own = files.some(({ file }) => file.includes('.debian.tar'));
  const applied = !own ? 'None of Debian\'s patches are applied.' : patches.length === 0 ? 'Debian has no patches for it.' : 'With these patches of Debian\'s:';
  return `## ${name} ${files[0].version}

${files.map(({ file, sha256 }) => `- \`${file}\`, SHA-256 \`${sha256}\``).join('\n')}

${applied}
${patches.length > 0 ? `\n${patches.map((patch) => `- ${patch}`).join('\n')}\n` : ''}`;
}

// A tree that was unpacked from an archive does not know.
function commit() {
  return existsSync(join(treeDir, '.git')) ? ` as of commit ${outputOf(['git', 'rev-parse', 'HEAD'], { cwd: treeDir }).trim()}` : '';
}
