// Sets up all that is missing, records the screen of a Windows session, and shows what is in the file.

import { mkdirSync, readdirSync, statSync, writeFileSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
import { parseArgs } from 'node:util';
import { CommandLog } from './demo/command-log.mjs';
import { writePage } from './demo/page.mjs';
import { runUnderWine, windowsPath } from './wine/runner.mjs';
import { buildRoot } from './workshop/build-root.mjs';
import { main, step, WorkshopError } from './workshop/report.mjs';
import { sandboxed } from './workshop/sandbox.mjs';
import { removeScratch, scratchFolder } from './workshop/scratch.mjs';
import { buildDir, buildTree, treeDir } from './workshop/tree.mjs';

const USAGE = `usage: npm run demo -- [options]
  --seconds N                  length of the recording, 5 unless said otherwise
  --fps N                      frame rate, 30 unless said otherwise
  --mode screen|window|region  what to record, the screen unless said otherwise
  --window TITLE               the window to record, by its whole title
  --region L,T,W,H             the region to record: left, top, width, height
  --encoder NAME               video encoder, libx264 unless said otherwise
  --pause FROM,TO              leaves out what happens between these seconds after the start
  --audio                      records the microphone and the speaker as well
  --out DIR                    where the recording, frame.png and index.html go, demo-out unless said otherwise
  --json FILE                  writes what was measured to FILE
  --screenshot                 also takes screenshot.png of the same, beside that FILE, or else beside the recording
  --verbose                    shows the module's own log`;

const OPTIONS = {
  seconds: { type: 'string', default: '5' },
  fps: { type: 'string', default: '30' },
  mode: { type: 'string' },
  window: { type: 'string' },
  region: { type: 'string' },
  encoder: { type: 'string', default: 'libx264' },
  pause: { type: 'string' },
  audio: { type: 'boolean', default: false },
  out: { type: 'string', default: 'demo-out' },
  json: { type: 'string' },
  screenshot: { type: 'boolean', default: false },
  verbose: { type: 'boolean', default: false },
  help: { type: 'boolean', default: false },
};

const CONTENT_TITLE = 'Brisolte demo';
const DEFAULT_REGION = { left: 320, top: 180, width: 640, height: 360 };

await main(async () => {
  const request = readRequest();
  if (!request) {
    console.log(USAGE);
    return 0;
  }
  await step('Build: the module', () => buildTree('windows', ['brisolte', 'pattern', 'tone', 'standins']));
  const outputDir = resolve(request.out);
  mkdirSync(outputDir, { recursive: true });
  const screenshot = request.screenshot ? screenshotPath(request, outputDir) : undefined;
  const log = new CommandLog(process.stderr, request.verbose);
  const file = await step(`Recording: ${request.mode}, ${request.seconds} s`, () => record(request, outputDir, screenshot, log));
  if (request.encoder.startsWith('mf_')) {
    console.log("The sink writer is the tests' stand-in for Media Foundation's: see tests/standins/README.md.");
  }
  const found = await step('Reading the recording back', () => readBack(file, outputDir, screenshot));
  showTable(found, outputDir);
  // Lines for those who look for a fault in the module come by the thousand.
  const said = log.entries.filter(({ level }) => level !== 'debug');
  console.log(`The recording with its log, for a browser: ${writePage(outputDir, found, stillIn(outputDir), said)}`);
  if (request.json) {
    writeFileSync(resolve(request.json), `${JSON.stringify(found, null, 2)}\n`);
  }
  return 0;
});

function readRequest() {
  let values;
  try {
    ({ values } = parseArgs({ options: OPTIONS }));
  } catch (error) {
    throw new WorkshopError(`${error.message}\n\n${USAGE}`);
  }
  if (values.help) {
    return undefined;
  }
  const mode = values.mode ?? (values.window ? 'window' : values.region ? 'region' : 'screen');
  const seconds = Number(values.seconds);
  const fps = Number(values.fps);
  const region = values.region ? regionOf(values.region) : undefined;
  const wrong =
    (!['screen', 'window', 'region'].includes(mode) && `--mode ${mode} is none of screen, window, region`) ||
    (!(seconds > 0 && seconds <= 3600) && `--seconds ${values.seconds} is not between 0 and 3600`) ||
    (!(Number.isInteger(fps) && fps >= 1 && fps <= 120) && `--fps ${values.fps} is not a whole number from 1 to 120`);
  if (wrong) {
    throw new WorkshopError(`${wrong}\n\n${USAGE}`);
  }
  return { ...values, mode, seconds, fps, region };
}

function regionOf(text) {
  const numbers = text.split(',').map(Number);
  if (numbers.length !== 4 || !numbers.every(Number.isInteger)) {
    throw new WorkshopError(`--region ${text} is not four whole numbers L,T,W,H\n\n${USAGE}`);
  }
  const [left, top, width, height] = numbers;
  return { left, top, width, height };
}

function screenshotPath({ json }, outputDir) {
  const folder = json ? dirname(resolve(json)) : outputDir;
  mkdirSync(folder, { recursive: true });
  return join(folder, 'screenshot.png');
}

/** Runs the command line in Node.js for Windows, before something to see and hear; gives the path of its recording. */
async function record(request, outputDir, screenshot, log) {
  const scratchDir = scratchFolder('demo');
  try {
    const requestFile = join(scratchDir, 'request.json');
    const inWindows = {
      contentTitle: CONTENT_TITLE,
      contentProgram: windowsPath(join(buildDir('windows'), 'pattern', 'pattern.exe')),
      toneProgram: windowsPath(join(buildDir('windows'), 'pattern', 'tone.exe')),
      scratchDir: windowsPath(scratchDir),
      audio: request.audio,
      seconds: request.seconds,
      commands: commandLines(request, outputDir, screenshot),
    };
    writeFileSync(requestFile, JSON.stringify(inWindows));
    const code = await runUnderWine('node', [windowsPath(join(treeDir, 'tools/demo/stage.cjs')), windowsPath(requestFile)], {
      standins: true,
      timeout: request.seconds + 120,
      writable: [scratchDir, outputDir, ...(screenshot ? [dirname(screenshot)] : [])],
      stderr: log,
    });
    if (code !== 0) {
      throw new WorkshopError(`The recording ended with exit code ${code}; the lines above say why.`);
    }
    return latestRecording(outputDir);
  } finally {
    removeScratch(scratchDir);
  }
}

/** What is written behind `node`, once for each command. */
function commandLines({ mode, window, region, fps, encoder, pause, audio, seconds }, outputDir, screenshot) {
  const { left, top, width, height } = region ?? DEFAULT_REGION;
  const target = {
    screen: [],
    window: ['--window', window ?? CONTENT_TITLE],
    region: [`--region=${[left, top, width, height]}`],
  }[mode];
  const record = [
    ...['record', ...target, '--fps', String(fps), '--encoder', encoder, '--seconds', String(seconds), '--out', windowsPath(outputDir)],
    ...(pause ? ['--pause', pause] : []),
    ...(audio ? ['--audio'] : []),
    '--verbose',
  ];
  const commands = [record, ...(screenshot ? [['screenshot', windowsPath(screenshot), ...target]] : [])];
  return commands.map((words) => [windowsPath(join(treeDir, 'lib', 'command-line', 'main.js')), ...words]);
}

function latestRecording(folder) {
  const files = readdirSync(folder).filter((name) => name.startsWith('Qorvex-'));
  const byAge = files.map((name) => join(folder, name)).sort((a, b) => statSync(b).mtimeMs - statSync(a).mtimeMs);
  return byAge[0];
}

async function readBack(file, outputDir, screenshot) {
  const root = await buildRoot();
  const readable = screenshot ? [dirname(screenshot)] : [];
  const inRoot = (words) => sandboxed(root, words, { readable, writable: [outputDir] });
  // Needs npm packages, which are there only since the build.
  const { measure, pictureSize, writeStill } = await import('./demo/measure.mjs');
  const found = measure(file, inRoot);
  writeStill(file, found.seconds, stillIn(outputDir), inRoot);
  return screenshot ? { ...found, screenshot: { file: screenshot, ...pictureSize(screenshot, inRoot) } } : found;
}

function stillIn(outputDir) {
  return join(outputDir, 'frame.png');
}

function showTable({ file, container, seconds, streams, screenshot }, outputDir) {
  console.log(`\n${file}\n${container}, ${seconds.toFixed(2)} s; a still of it: ${stillIn(outputDir)}\n`);
  console.table(streams);
  if (screenshot) {
    console.log(`a screenshot of ${screenshot.width} by ${screenshot.height}: ${screenshot.file}`);
  }
}
