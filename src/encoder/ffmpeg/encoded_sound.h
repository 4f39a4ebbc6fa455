#pragma once

#include <cstdint>

#include "capture/recording_options.h"
#include "encoder/ffmpeg/audio_input.h"
#include "encoder/ffmpeg/ffmpeg.h"

namespace brisolte {

/// What one sound is encoded into, and with what.
struct EncodedSound {
  const char* codecName = "";    ///< as people call it
  const char* encoderName = "";  ///< as FFmpeg calls it
  AVSampleFormat sampleFormat = AV_SAMPLE_FMT_NONE;
  int leastStep = 1;  ///< from the time of a frame to that of the next one, in samples
  int channels = 0;
  int sampleRate = 0;        ///< Hz
  std::int64_t bitRate = 0;  ///< bits per second of all channels
};

/// What keeps most of a source's sound in a codec.
///
/// Up to eight channels are mixed down to two; more have no layout that could be mixed. A rate that the codec
/// does not have becomes the next one that it has, see docs/sound.md; one that no device has stays as it is,
/// for the encoder to refuse. A bit rate that the codec does not have becomes the nearest.
EncodedSound ChooseEncodedSound(const AudioInput& input, const SoundOptions& options);

}  // namespace brisolte
