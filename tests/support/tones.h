#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "encoder/wave_format.h"

namespace brisolte::testing {

/// A device's format in its usual form, with the plain or the extensible tag.
WaveFormat DeviceFormat(SampleType type, std::uint16_t channels, std::uint32_t rate, bool extensible = false);

/// A sine wave; `level` 1 is full scale.
struct Tone {
  double frequency = 0;
  double level = 0;
};

/// Interleaved samples from the `first` one on, with a tone for each channel; channels without one are
/// silent.
std::vector<std::uint8_t> ToneBytes(const WaveFormat& format, const std::vector<Tone>& tones,
                                    std::size_t first, std::size_t count);

/// How much of one frequency is in a signal.
struct ToneFit {
  double level = 0;     ///< of the wave that fits best
  double residual = 0;  ///< effective value of everything else
};

ToneFit FitTone(std::span<const float> samples, double frequency, double rate);

}  // namespace brisolte::testing
