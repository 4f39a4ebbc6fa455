// What an independent program, the host's ffprobe, finds in a recording.

import { extname } from 'node:path';
import { outputOf } from '../workshop/processes.mjs';
import { strongestFrequency } from './spectrum.mjs';

/**
 * Reads a finished recording to its end.
 * @param {(words: string[]) => string[]} hostCommand turns a command of the build root into one to start
 */
export function measure(file, hostCommand) {
  const words = ['ffprobe', '-v', 'error', '-count_frames', '-show_format', '-show_streams', '-of', 'json', file];
  const { format, streams } = JSON.parse(outputOf(hostCommand(words)));
  return {
    file,
    container: containerOf(file, format.format_name.split(',')),
    seconds: Number(format.duration),
    streams: streams.map((stream) => {
      const seconds = Number(stream.duration ?? format.duration);
      return stream.codec_type === 'audio'
        ? describeSound(stream, seconds, hear(file, stream, seconds, hostCommand))
        : describePicture(stream, seconds);
    }),
  };
}

/** Writes one frame from the middle of the recording as a PNG. */
export function writeStill(file, seconds, png, hostCommand) {
  const from = ['-ss', String(seconds / 2), '-i', file];
  outputOf(hostCommand(['ffmpeg', '-v', 'error', '-y', ...from, '-frames:v', '1', '-update', '1', png]));
}

/** The size of a picture. */
export function pictureSize(file, hostCommand) {
  const words = ['ffprobe', '-v', 'error', '-show_entries', 'stream=width,height', '-of', 'json', file];
  const [{ width, height }] = JSON.parse(outputOf(hostCommand(words))).streams;
  return { width, height };
}

// ffprobe names a family of containers that share a demuxer; the file's own extension tells which of them it is.
function containerOf(file, family) {
  const extension = extname(file).slice(1);
  return family.includes(extension) ? extension : family[0];
}

function describePicture(stream, seconds) {
  const frames = Number(stream.nb_read_frames);
  return {
    codec: stream.codec_name,
    type: stream.codec_type,
    width: stream.width,
    height: stream.height,
    pixelFormat: stream.pix_fmt,
    frames,
    averageFps: Math.round((100 * frames) / seconds) / 100,
  };
}

function describeSound(stream, seconds, samples) {
  const sampleRate = Number(stream.sample_rate);
  return {
    codec: stream.codec_name,
    type: stream.codec_type,
    sampleRate,
    channels: stream.channels,
    seconds,
    strongestFrequency: strongestFrequency(samples, sampleRate),
  };
}

/** Up to two seconds from the middle of one stream, its channels mixed to one. */
function hear(file, stream, seconds, hostCommand) {
  const from = ['-ss', String(Math.max(0, seconds / 2 - 1)), '-t', '2', '-i', file];
  const words = ['ffmpeg', '-v', 'error', ...from, '-map', `0:${stream.index}`, '-ac', '1', '-f', 'f32le', '-'];
  const bytes = new Uint8Array(outputOf(hostCommand(words), { encoding: 'buffer' }));
  return new Float32Array(bytes.buffer, 0, Math.floor(bytes.length / 4));
}
