#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "encoder/wave_format.h"

namespace brisolte {

/// Reads a format from its description in memory, little-endian and packed as the platform and RIFF files
/// have it: the basic format and what it says follows it. None when the bytes end before the basic format
/// does; a sub-format beyond their end is not read.
std::optional<WaveFormat> ReadWaveFormat(std::span<const std::uint8_t> bytes);

}  // namespace brisolte
