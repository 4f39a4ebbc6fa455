// What FFmpeg's own programs can play of a file.

import { spawnSync } from 'node:child_process';

/**
 * Decodes a file to its end.
 * @param {(words: string[]) => string[]} inRoot turns a command of the build root into one to start
 * @returns {{opens: boolean, seconds: number, frames: number, sounds: number, errors: string}} `seconds` is the time of
 *   the last picture, or of the last sound without one; `errors` what the decoder complained of
 */
export function decode(file, inRoot) {
  const run = (words) => {
    const [program, ...rest] = inRoot(words);
    return spawnSync(program, rest, { encoding: 'utf8', maxBuffer: 1 << 28 });
  };
  const entries = 'stream=codec_type,nb_read_frames:frame=media_type,best_effort_timestamp_time';
  const probed = run(['ffprobe', '-v', 'error', '-count_frames', '-show_entries', entries, '-of', 'json', file]);
  const { streams = [], frames = [] } = probed.status === 0 ? JSON.parse(probed.stdout) : {};
  const of = (type) => frames.filter((frame) => frame.media_type === type);
  const times = (of('video').length > 0 ? of('video') : of('audio')).map((frame) => Number(frame.best_effort_timestamp_time));
  return {
    opens: probed.status === 0,
    seconds: times.reduce((most, time) => Math.max(most, time || 0), 0),
    frames: of('video').length,
    sounds: streams.filter((stream) => stream.codec_type === 'audio' && Number(stream.nb_read_frames) > 0).length,
    errors: probed.stderr.trim(),
  };
}
