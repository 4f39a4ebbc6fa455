#pragma once

#include <cstddef>
#include <optional>

#include "capture/capture_settings.h"
#include "encoder/wave_format.h"

namespace brisolte {

/// The samples that one source delivers, in a form that can be converted.
struct AudioInput {
  SampleType sampleType = SampleType::kFloat32;
  int bitsPerSample = 0;
  int channels = 0;
  int sampleRate = 0;          ///< Hz
  std::size_t blockBytes = 0;  ///< bytes of one sample of all channels
};

/// What a source in `format` delivers; without a format, the settings' rate and channels in 32-bit floating
/// point, as the platform mixes. None when the samples are not of a known kind or the format contradicts
/// itself.
std::optional<AudioInput> DescribeAudioInput(const WaveFormat* format, const CaptureSettings& settings);

}  // namespace brisolte
