'use strict';

// Recordings of the class, told in a way that is the same for each run: what the log says, and how the files are made.

const fs = require('node:fs');
const path = require('node:path');
const { openPattern } = require('./desktop');
const media = require('./media');
const { boxesOf } = require('./boxes');
const { recordAll, recordSound } = require('./recording');
const { microphone, playTone, speaker } = require('./sound');

const SIZE = { x: 20, y: 20, width: 320, height: 192 };

/** What is set of each recording; with `picture: false`, of sound alone. */
const RECORDINGS = {
  'MP4 of a window with both sounds': () => ({ settings: [microphone(), speaker()] }),
  'MP4 of a region without sound, slowly': () => ({ settings: [['setRegion', { left: 20, top: 20, width: 300, height: 101 }], ['setFrameRate', 5], ['setBitrate', 400_000]] }),
  'MP4 by x265 with a sound': () => ({ settings: [['setEncoder', 'libx265'], microphone()] }),
  'WebM': () => ({ settings: [['setEncoder', 'libvpx']] }),
  'MOV with a sound': () => ({ settings: [['setEncoder', 'prores_ks'], speaker()] }),
  'AVI with a sound': () => ({ settings: [['setEncoder', 'mjpeg'], microphone()] }),
  'MP4 by Media Foundation with a sound': () => ({ settings: [['setEncoder', 'mf_h264'], microphone(), ['setAudioBitrate', 96_000]] }),
  'MP3': () => ({ picture: false, settings: [microphone()] }),
};

/** Makes a recording and tells of it: { log, file }, as JSON holds it. */
async function recorded(t, name) {
  const { settings, picture = true } = RECORDINGS[name]();
  const window = await openPattern(t, { title: 'Contract', ...SIZE });
  await playTone(t, { endpoint: 'Speaker', frequency: 1000 });
  if (!picture) {
    const { file, log } = await recordSound({ settings });
    return JSON.parse(JSON.stringify({ log: linesOf(log.text, file), file: madeOf(file) }));
  }
  const plan = { window, pictures: 120, settings: [['setWindow', window.handle], ...settings] };
  const { recordings, log } = await recordAll([plan]);
  const [{ file }] = recordings;
  return JSON.parse(JSON.stringify({ log: linesOf(log.text, file), file: madeOf(file) }));
}

// How late a device delivers, and what its thread is doing at the stop, is chance.
const BY_CHANCE = /Adjusting \w+ buffer|frame processing interrupted|Audio processing skipped/;

/** The lines of a log, each once, without what differs from run to run; sorted, since threads write it. */
function linesOf(text, file) {
  const lines = text
    .split(/\r?\n/)
    .filter((line) => line.trim() !== '' && !BY_CHANCE.test(line))
    .map((line) =>
      line
        .replaceAll(file, 'FILE')
        .replaceAll(path.dirname(file), 'FOLDER')
        .replace(/\d{4}-\d\d-\d\d \d\d:\d\d:\d\d/g, '')
        .replaceAll('[INFO]', '')
        .trim()
        .replace(/\b0x[0-9a-fA-F]+/g, 'ADDRESS')
        .replace(/(ID: )[^,)]+/g, '$1ID')
        .replace(/(timestamp: |arrived at: |trigger count |processed: |token: )\d+/g, '$1N'),
    );
  return [...new Set(lines)].sort();
}

/**
 * What a log has and another has not, each way. A line is written in pieces, between which other threads write theirs: it counts
 * as there when its text is, and as strange when something is left once the texts of the other are taken out.
 */
function differences(lines, known) {
  const text = lines.join('\n');
  const longestFirst = [...known].sort((a, b) => b.length - a.length);
  const rest = longestFirst.reduce((left, line) => left.replaceAll(line, ''), text);
  return { missing: known.filter((line) => !text.includes(line)), strange: rest.split('\n').filter((line) => line.trim() !== '') };
}

/** How a file is made: its container's boxes and its streams. */
function madeOf(file) {
  const { format, streams, packets } = media.describe(file);
  const ending = path.extname(file);
  return {
    ending,
    format: { name: format.format_name, tags: withoutTimes(format.tags) },
    boxes: ['.mp4', '.mov'].includes(ending) ? boxesOf(fs.readFileSync(file)) : undefined,
    streams: streams.map((stream) => madeOfStream(stream)),
    firstIsKey: packets.at(0)?.key,
  };
}

// What does not hang on how long the recording was.
const OF_STREAM = [
  ...['index', 'codec_name', 'profile', 'codec_type', 'codec_tag_string', 'width', 'height', 'pix_fmt', 'level', 'color_range'],
  ...['color_space', 'color_transfer', 'color_primaries', 'refs', 'is_avc', 'nal_length_size', 'id', 'time_base', 'extradata_size', 'disposition'],
  ...['sample_fmt', 'sample_rate', 'channels', 'channel_layout', 'has_b_frames'],
];

const madeOfStream = (stream) => ({ ...Object.fromEntries(OF_STREAM.map((name) => [name, stream[name]])), tags: withoutTimes(stream.tags) });
const withoutTimes = (tags = {}) => Object.fromEntries(Object.entries(tags).filter(([name]) => !/time|DURATION/i.test(name)));

module.exports = { RECORDINGS, differences, recorded };
