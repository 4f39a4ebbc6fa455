#pragma once

#include <cstdint>
#include <span>

#include "encoder/wave_format.h"

namespace brisolte {

/// Writes `frames` frames that nobody hears but that are not all zero, because an endpoint may treat digital
/// silence as nothing being played. Samples of a layout that is not known, and 24 packed bits, stay as they
/// are. Never writes beyond `buffer`.
void FillWithNearSilence(const WaveFormat& format, std::uint32_t frames, std::span<std::uint8_t> buffer);

}  // namespace brisolte
