#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace brisolte::standins {

/// What the system's AAC encoder gives out.
struct AacFormat {
  std::uint32_t sampleRate = 0;
  std::uint32_t channels = 0;
  std::uint32_t bytesPerSecond = 0;
};

inline constexpr std::array<std::uint32_t, 2> kAacRates{44'100, 48'000};
inline constexpr std::array<std::uint32_t, 3> kAacChannels{1, 2, 6};
inline constexpr std::array<std::uint32_t, 4> kAacBytesPerSecond{12'000, 16'000, 20'000, 24'000};

/// Six channels take six times the bytes.
constexpr std::uint32_t AacBytesFactor(std::uint32_t channels) {
  return channels == 6 ? 6 : 1;
}

constexpr bool IsAacFormat(const AacFormat& format) {
  const std::uint32_t factor = AacBytesFactor(format.channels);
  return std::ranges::count(kAacRates, format.sampleRate) > 0 &&
         std::ranges::count(kAacChannels, format.channels) > 0 &&
         std::ranges::any_of(kAacBytesPerSecond,
                             [&](std::uint32_t bytes) { return bytes * factor == format.bytesPerSecond; });
}

}  // namespace brisolte::standins
