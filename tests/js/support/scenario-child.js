'use strict';

// Runs one scenario in a process of its own: see scenario.js. Its only argument is the job's file.

const fs = require('node:fs');
const { painted, paintedMore } = require('./desktop');
const { LiveLog } = require('./log');
const { packageFolder } = require('./package');
const { waitFor } = require('./wait');

const job = JSON.parse(fs.readFileSync(process.argv[2], 'utf8'));

async function run() {
  const { Brisolte } = require(packageFolder);
  const scenario = new Function(`return (${job.source});`)();
  const tools = { Brisolte, log: new LiveLog(job.log), painted, paintedMore, waitFor, require, packageFolder, supportFolder: __dirname };
  return { value: await scenario(tools, job.given) };
}

run()
  .catch((error) => ({ failure: error instanceof Error ? (error.stack ?? error.message) : String(error) }))
  .then((outcome) => fs.writeFileSync(job.result, JSON.stringify(outcome)));
