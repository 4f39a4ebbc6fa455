#pragma once

#include <cstdint>
#include <span>

#include "encoder/wave_format.h"

namespace brisolte {

/// Multiplies interleaved samples by a volume that goes evenly from `from` to `to`, so that a change is not
/// heard as a click, and gives the loudest of them: 1 is full scale. Samples of whole numbers stay within
/// their range. Of a layout that is not known nothing is changed, and 0 given.
float Amplify(const WaveFormat& format, std::span<std::uint8_t> bytes, float from, float to);

}  // namespace brisolte
