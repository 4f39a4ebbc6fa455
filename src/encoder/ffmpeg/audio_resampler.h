#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "encoder/ffmpeg/audio_input.h"
#include "encoder/ffmpeg/encoded_sound.h"
#include "encoder/ffmpeg/ffmpeg_types.h"

namespace brisolte {

/// Converts the samples of one source into what the encoder takes: 32-bit floating point, planar or not, with
/// the channels mixed down, without clipping, where there are too many, and at a rate that the encoder has.
class AudioResampler {
 public:
  /// Replaces an earlier conversion. False, with an ERROR line, when FFmpeg cannot convert.
  bool InitializeResampler(const AudioInput& input, const EncodedSound& output);

  /// Converts the whole samples in `bytes`, at least one. The result is this object's and valid until the
  /// next call; its time is not set. Null, with an ERROR line, on failure.
  AVFrame* Convert(std::span<const std::uint8_t> bytes);

  /// Gives out, in the same way, what a conversion to another rate still holds; null when nothing is held.
  /// Nothing is converted afterwards.
  AVFrame* Drain();

 private:
  AVFrame* Convert(const std::uint8_t* unpacked, int samples);
  std::span<const std::uint8_t> Unpacked(std::span<const std::uint8_t> bytes);
  bool MakeRoom(int samples);
  void LimitSamples();

  AudioInput input_;
  EncodedSound output_;
  ResamplerPtr resampler_;
  FramePtr frame_;
  int capacity_ = 0;  ///< samples that `frame_` has room for
  std::vector<std::int32_t> unpacked_;
};

}  // namespace brisolte
