// The C++ source that defines each function of <node_api.h> as a call of the host's, made from the header's declarations.

import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { WorkshopError } from '../workshop/report.mjs';
import { treeDir } from '../workshop/tree.mjs';

const headersDir = join(treeDir, 'node_modules', 'node-api-headers', 'include');

export const hostFunctionsPath = join(treeDir, 'src', 'binding', 'host_functions.inc');

// The names are those of Node's headers.
const BEGINNING = `// Generated from Node's headers, under their conditions: npm run host-functions
// NOLINTBEGIN
`;
const END = '// NOLINTEND\n';

/** What the file has to hold. @throws {WorkshopError} when a header has a declaration of another form */
export const hostFunctionsText = () =>
  [BEGINNING, ...['js_native_api.h', 'node_api.h'].map((name) => callsFor(readFileSync(join(headersDir, name), 'utf8'), name)), END].join('\n');

/** Whether the file in the tree holds that. */
export const areHostFunctionsCurrent = () => readFileSync(hostFunctionsPath, 'utf8') === hostFunctionsText();

/** The definitions for the functions of a header's text, under the conditions that decide which it declares. */
export function callsFor(header, name) {
  const text = header.replace(/\/\/.*$/gm, '').replace(/\\\r?\n/g, ' ');
  const parts = text.match(/^[ \t]*#[ \t]*(?:if|ifdef|ifndef|elif|else|endif)\b.*$|^NAPI_EXTERN\b[^;]*;/gm).map((part) => part.replace(/\s+/g, ' ').trim());
  const lines = parts.map((part) => (part.startsWith('#') ? part : definitionFor(part, name)));
  return `${withoutEmptyConditions(lines).join('\n')}\n`;
}

function definitionFor(declaration, header) {
  const form = /^NAPI_EXTERN (?<noReturn>NAPI_NO_RETURN )?(?<type>void|napi_status) NAPI_CDECL (?<name>\w+) ?\((?<parameters>.*)\);$/;
  const { noReturn, type, name, parameters } = declaration.match(form)?.groups ?? {};
  if (!name) {
    throw new WorkshopError(`${header}: a declaration of an unknown form: ${declaration}`);
  }
  const names = parameters.split(',').map((parameter) => parameter.match(/(\w+) ?$/)[1]);
  const call = `host_${name}.Call<decltype(&${name})>(${names.join(', ')});`;
  const body = noReturn ? `${call}\n  std::abort();` : type === 'void' ? call : `return ${call}`;
  return `static brisolte::HostFunction host_${name}("${name}");
extern "C" ${type} NAPI_CDECL ${name}(${parameters.trim()}) {
  ${body}
}`;
}

/** Leaves out the conditions that no function stands under: those of the header's guard and of its macros. */
function withoutEmptyConditions(lines) {
  const kept = [];
  const open = [];
  for (const line of lines) {
    if (/^#if/.test(line)) {
      open.push({ at: kept.length, hasFunction: false });
    } else if (!line.startsWith('#')) {
      open.forEach((condition) => (condition.hasFunction = true));
    }
    kept.push(line);
    if (/^#endif/.test(line)) {
      const { at, hasFunction } = open.pop();
      const isGuard = /^#ifndef SRC_/.test(kept[at]);
      if (!hasFunction) {
        kept.length = at;
      } else if (isGuard) {
        kept.splice(at, 1);
        kept.pop();
      }
    }
  }
  return kept;
}
