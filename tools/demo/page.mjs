// The page that the demo ends with: what was recorded, for a browser that opens it from the disk. It loads nothing from elsewhere.

import { writeFileSync } from 'node:fs';
import { basename, join, relative, sep } from 'node:path';

// Those that browsers play; of the others they show the still.
const PLAYED = ['.mp4', '.webm', '.mp3', '.m4a'];

const STYLE = `body { font: 1rem/1.5 system-ui, sans-serif; max-width: 60rem; margin: 2rem auto; padding: 0 1rem; color: #222; background: #fff }
video, img { display: block; max-width: 100%; height: auto; border: 1px solid #bbb }
figure { margin: 1rem 0 } figcaption { color: #555 }
table { border-collapse: collapse; display: block; overflow-x: auto } th, td { border: 1px solid #bbb; padding: .2rem .6rem; text-align: left }
pre { overflow: auto; max-height: 30rem; padding: 1rem; background: #f4f4f4 } .warning { color: #8a5a00 } .error { color: #b00020 }`;

const escaped = (text) => String(text).replace(/[&<>"]/g, (character) => `&#${character.charCodeAt(0)};`);

/**
 * Writes index.html into the folder of the recording.
 * @param {string} folder
 * @param {{file: string, container: string, seconds: number, streams: object[], screenshot?: {file: string, width: number, height: number}}} found
 *   as the demo measured it
 * @param {string} still a picture from the middle of the recording
 * @param {{source: string, level: string, text: string}[]} log
 * @returns {string} its path
 */
export function writePage(folder, found, still, log) {
  const page = join(folder, 'index.html');
  const place = (file) => escaped(relative(folder, file).split(sep).map(encodeURIComponent).join('/'));
  writeFileSync(page, pageText({ ...found, still, log }, place));
  return page;
}

function pageText({ file, container, seconds, streams, screenshot, still, log }, place) {
  const name = escaped(basename(file));
  return `<!doctype html>
<html lang="en">
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<title>${name}</title>
<style>
${STYLE}
</style>
<h1>A recording of Brisolte's</h1>
<p><a href="${place(file)}">${name}</a>: ${escaped(container)}, ${seconds.toFixed(2)} s</p>
${player(file, still, place)}
<h2>What is in it</h2>
${table(streams)}
${figure(place(still), 'A still from its middle')}
${screenshot ? figure(place(screenshot.file), `A screenshot, ${screenshot.width} by ${screenshot.height}`) : ''}
<h2>What the module said</h2>
<pre>${log.map(logLine).join('\n')}</pre>
</html>
`;
}

function player(file, still, place) {
  return PLAYED.some((ending) => file.endsWith(ending))
    ? `<video controls preload="metadata" poster="${place(still)}" src="${place(file)}"></video>`
    : '<p>Browsers do not play this container; a player such as VLC does.</p>';
}

const figure = (source, caption) =>
  `<figure><img src="${source}" alt="${escaped(caption)}"><figcaption>${escaped(caption)}</figcaption></figure>`;

/** A column for each property that any of the rows has. */
function table(rows) {
  const columns = [...new Set(rows.flatMap(Object.keys))];
  const line = (cells, tag) => `<tr>${cells.map((cell) => `<${tag}>${escaped(cell ?? '')}</${tag}>`).join('')}</tr>`;
  return `<table>\n${line(columns, 'th')}\n${rows.map((row) => line(columns.map((column) => row[column]), 'td')).join('\n')}\n</table>`;
}

const logLine = ({ source, level, text }) => `<span class="${level}">${escaped(`${source} ${level}: ${text}`)}</span>`;
