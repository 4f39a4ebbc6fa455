'use strict';

const fs = require('node:fs');
const { PNG } = require('pngjs');
const { FAULTS_FILE } = require('./faults');
const { scenario } = require('./scenario');
const { scratchFile } = require('./scratch');

/**
 * Takes screenshots one after the other in one child process and instance.
 *
 * @param {object[]} plans of each screenshot:
 *   settings: [[method, ...arguments], ...], each of which must return true;
 *   file: where it goes (a new file);
 *   rules: calls of the capture service that fail meanwhile, as tests/standins/README.md says
 * @returns {Promise<object[]>} of each: answer (what was returned, or an exception as its class and text), file, errors
 *   and infos (messages of the log)
 */
async function takeAll(plans, options) {
  const given = plans.map(({ settings = [], file = scratchFile('png'), rules = [] }) => ({ settings, file, rules }));
  const { value } = await scenario(takeScreenshots, { plans: given, faults: FAULTS_FILE }, options);
  return value;
}

async function takeScreenshots({ Brisolte, log, waitFor, require: load }, { plans, faults }) {
  const files = load('node:fs');
  const capture = new Brisolte();
  const attempt = (file) => {
    try {
      return capture.captureScreenshot(file);
    } catch (error) {
      return `${error.constructor.name}: ${error.message}`;
    }
  };
  // The service has 200 ms for its first frame, which a busy machine may take longer for; then the call says so.
  const wasTooSlow = ({ errors }, rules) =>
    errors[0] === 'Failed to get frame' && !rules.some((rule) => rule.startsWith('TryGetNextFrame'));
  const take = ({ settings, file, rules }) => {
    for (const [method, ...words] of settings) {
      if (capture[method](...words) !== true) {
        throw new Error(`${method}(${words}) was refused`);
      }
    }
    const mark = log.mark();
    if (rules.length > 0) {
      files.writeFileSync(faults, rules.map((rule) => `${rule}\r\n`).join(''));
    }
    const answer = attempt(file);
    files.rmSync(faults, { force: true });
    const seen = log.since(mark);
    return { answer, file, errors: seen.errors, infos: seen.messages('INFO') };
  };
  const taken = [];
  for (const plan of plans) {
    await waitFor('a frame in time', () => {
      const screenshot = take(plan);
      taken[plans.indexOf(plan)] = screenshot;
      return !wasTooSlow(screenshot, plan.rules);
    });
  }
  return taken;
}

/** One screenshot that must succeed. */
async function take(plan) {
  const [screenshot] = await takeAll([plan]);
  if (screenshot.answer !== true) {
    throw new Error(`${screenshot.answer}: ${screenshot.errors.join('\n')}`);
  }
  return screenshot;
}

/** A PNG as { width, height, pixels (red, green, blue), alphas, depth, colorType }, read by a library of its own. */
function readPng(file) {
  const { width, height, data, depth, colorType } = PNG.sync.read(fs.readFileSync(file));
  const pixels = Buffer.alloc(width * height * 3);
  const alphas = Buffer.alloc(width * height);
  for (let i = 0; i < width * height; i += 1) {
    data.copy(pixels, i * 3, i * 4, i * 4 + 3);
    alphas[i] = data[i * 4 + 3];
  }
  return { width, height, pixels, alphas, depth, colorType };
}

module.exports = { readPng, take, takeAll };
