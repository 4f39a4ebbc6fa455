#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace brisolte::testing {

using SubFormat = std::array<std::uint8_t, 16>;

inline constexpr SubFormat kPcmSubFormat{0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10, 0x00,
                                         0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};
inline constexpr SubFormat kFloatSubFormat{0x03, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10, 0x00,
                                           0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

/// A device's format as it lies in memory, with the basic fields only.
inline std::vector<std::uint8_t> PlainFormat(std::uint16_t tag, std::uint16_t bits, std::uint16_t channels,
                                             std::uint32_t rate) {
  std::vector<std::uint8_t> bytes;
  const auto put = [&bytes](std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i) {
      bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
  };
  const std::uint32_t blockAlign = bits / 8U * channels;
  put(tag, 2);
  put(channels, 2);
  put(rate, 4);
  put(rate * blockAlign, 4);
  put(blockAlign, 2);
  put(bits, 2);
  put(0, 2);
  return bytes;
}

/// The same with the extensible tag and a sub-format behind it.
inline std::vector<std::uint8_t> ExtensibleFormat(const SubFormat& subFormat, std::uint16_t bits,
                                                  std::uint16_t channels, std::uint32_t rate) {
  auto bytes = PlainFormat(0xFFFE, bits, channels, rate);
  bytes[16] = 22;
  bytes.push_back(static_cast<std::uint8_t>(bits));
  bytes.insert(bytes.end(), {0, 0, 0, 0, 0});
  bytes.insert(bytes.end(), subFormat.begin(), subFormat.end());
  return bytes;
}

}  // namespace brisolte::testing
