// When a recording's flashes and clicks are shown and heard, by the time stamps that a player goes by.

const decoded = (read, file, stream, entries) => {
  const words = ['-v', 'error', '-select_streams', stream, '-show_entries', `frame=${entries}`, '-of', 'json', file];
  return JSON.parse(read(['ffprobe', ...words])).frames;
};

/** The times, in seconds, at which the picture turns from dark to light. */
export function beatsOfPicture(file, read) {
  const times = decoded(read, file, 'v:0', 'pts_time').map((frame) => Number(frame.pts_time));
  const words = ['-v', 'error', '-i', file, '-map', '0:v:0', '-vf', 'scale=1:1:flags=area,format=gray'];
  const light = read(['ffmpeg', ...words, '-fps_mode', 'passthrough', '-f', 'rawvideo', '-'], { encoding: 'buffer' });
  return times.filter((_, i) => i > 0 && light[i] > 128 && light[i - 1] <= 128);
}

/** The times, in seconds, at which a sound begins after silence. */
export function beatsOfSound(file, read) {
  const words = ['-v', 'error', '-i', file, '-map', '0:a:0', '-ac', '1', '-f', 'f32le', '-'];
  const bytes = new Uint8Array(read(['ffmpeg', ...words], { encoding: 'buffer' }));
  const samples = new Float32Array(bytes.buffer);
  const rate = Number(streamsOf(file, read).find(({ codec_type: type }) => type === 'audio').sample_rate);
  const beats = [];
  let first = 0;
  let silentSince = -Infinity;
  for (const { pts_time: time, nb_samples: count } of decoded(read, file, 'a:0', 'pts_time,nb_samples')) {
    samples.subarray(first, first + count).forEach((sample, i) => {
      if (Math.abs(sample) > 0.05) {
        if (first + i - silentSince > rate / 2) {
          beats.push(Number(time) + i / rate);
        }
        silentSince = first + i;
      }
    });
    first += count;
  }
  return beats.slice(1); // the recording may begin in the middle of the first
}

/** The lengths of picture and sound, and the longest step from one packet of sound to the next, in seconds. */
export function lengths(file, read) {
  const streams = streamsOf(file, read);
  const length = (type) => Number(streams.find((stream) => stream.codec_type === type).duration);
  const words = ['-v', 'error', '-select_streams', 'a:0', '-show_entries', 'packet=pts_time', '-of', 'json', file];
  const times = JSON.parse(read(['ffprobe', ...words])).packets.map((packet) => Number(packet.pts_time));
  const steps = times.slice(1).map((time, i) => time - times[i]);
  return { picture: length('video'), sound: length('audio'), longestStep: Math.round(1000 * Math.max(...steps)) / 1000 };
}

const streamsOf = (file, read) => JSON.parse(read(['ffprobe', '-v', 'error', '-show_streams', '-of', 'json', file])).streams;
