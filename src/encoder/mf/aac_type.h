#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace brisolte {

/// A kind of AAC that an encoder gives out.
struct AacType {
  std::uint32_t sampleRate = 0;  ///< Hz
  std::uint32_t channels = 0;
  std::uint32_t bytesPerSecond = 0;

  bool operator==(const AacType&) const = default;
};

/// The kind to encode sound as that `wanted` describes: that itself where it is among `available`, else the
/// nearest. 48 kHz, or 44.1 kHz for its multiples, takes the place of other rates, and stereo that of more
/// channels; of what is left, the nearest bit rate. None when nothing is left.
std::optional<AacType> NearestAacType(const AacType& wanted, std::span<const AacType> available);

}  // namespace brisolte
