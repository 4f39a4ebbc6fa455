'use strict';

// The container that the module records into, which follows from the encoder.

const CONTAINERS = {
  webm: ['libvpx', 'vp8', 'vp8_nvenc', 'vp8_qsv', 'libvpx-vp9', 'vp9', 'vp9_nvenc', 'vp9_qsv'],
  mov: ['prores', 'prores_ks', 'prores_videotoolbox'],
  avi: ['mjpeg', 'mjpeg_qsv', 'mjpeg_nvenc'],
};
const MEDIA_FOUNDATION = ['mf_h264', 'mf_hevc'];

/** The ending of a recording's name, without a dot. */
function containerOf({ encoder, picture }) {
  if (!picture) {
    return MEDIA_FOUNDATION.includes(encoder) ? 'm4a' : 'mp3';
  }
  const [container] = Object.entries(CONTAINERS).find(([, encoders]) => encoders.includes(encoder)) ?? ['mp4'];
  return container;
}

// What a container takes and players play, the usual first.
const SOUNDS = { mp4: ['aac', 'mp3', 'opus'], mov: ['aac', 'mp3'], webm: ['opus'], avi: ['mp3'], mp3: ['mp3'], m4a: ['aac'] };

/** The codecs that the sound of a recording can have, the usual first. */
function soundsOf({ encoder, picture }) {
  return MEDIA_FOUNDATION.includes(encoder) ? ['aac'] : SOUNDS[containerOf({ encoder, picture })];
}

/** Whether a file can be played up to where it breaks off; others have their index at the end. */
function playsWithoutEnd({ encoder, picture, safeFile }) {
  const ending = containerOf({ encoder, picture });
  return ['webm', 'avi', 'mp3'].includes(ending) || (safeFile && ['mp4', 'mov'].includes(ending) && !MEDIA_FOUNDATION.includes(encoder));
}

module.exports = { containerOf, MEDIA_FOUNDATION, playsWithoutEnd, soundsOf };
