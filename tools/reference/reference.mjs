// The page docs/api.md: what index.d.ts says, for people who read documentation rather than declarations.

import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { treeDir } from '../workshop/tree.mjs';

const declarations = join(treeDir, 'index.d.ts');

export const referencePath = join(treeDir, 'docs', 'api.md');

const HEAD = `# Reference

<!-- Made from index.d.ts by: npm run reference -->

\`\`\`js
const { Brisolte } = require('brisolte'); // or: import { Brisolte } from 'brisolte';
\`\`\`
`;

/** The page as it must be. */
export async function referenceText() {
  // Loaded here because the package may be missing until the npm packages are installed.
  const { readDeclarations } = await import('./declarations.mjs');
  const { classes, records, unions } = readDeclarations(declarations);
  const parts = [HEAD, ...classes.map(classText), '## Objects\n', ...records.map(recordText), '## Numbers\n', ...unions.map(unionText)];
  return `${parts.join('\n').trimEnd()}\n`;
}

/** Whether the page in the tree is what it must be. */
export const isReferenceCurrent = async () => readFileSync(referencePath, 'utf8') === (await referenceText());

const classText = ({ name, comment, members }) =>
  [`## ${name}\n`, `${comment}\n`, ...members.map((member) => memberText(name, member))].join('\n');

function memberText(className, { name, signature, comment, parameters, returns, throws }) {
  const points = [
    ...parameters.map((parameter) => `\`${parameter.name}\`: ${parameter.comment}`),
    ...(returns ? [`Returns ${returns}`] : []),
    ...throws.map(({ type, text }) => `Throws \`${type}\`: ${text}`),
  ];
  const title = name === 'constructor' ? `new ${className}()` : name;
  const list = points.map((point) => `- ${point.replace(/\n+/g, ' ')}`).join('\n');
  return [`### ${title}\n`, `\`\`\`ts\n${signature}\n\`\`\`\n`, `${comment}\n`, ...(list ? [`${list}\n`] : [])].join('\n');
}

function recordText({ name, comment, members }) {
  const rows = members.map((member) => `| \`${member.name}\` | \`${member.type}\` | ${member.comment} |`);
  return [`### ${name}\n`, `${comment}\n`, '| property | type | |', '|---|---|---|', ...rows, ''].join('\n');
}

const unionText = ({ name, comment }) => `### ${name}\n\n${comment}\n`;
