#include "audio/wave_format_bytes.h"

#include <algorithm>
#include <array>

namespace brisolte {
namespace {

constexpr std::size_t kBasicSize = 18;
// Behind the valid bits of a sample and the mask of the speakers' places.
constexpr std::size_t kSubFormatOffset = kBasicSize + 6;

// {00000003-0000-0010-8000-00AA00389B71}
constexpr std::array<std::uint8_t, 16> kFloatSubFormat{0x03, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10, 0x00,
                                                       0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};

std::uint16_t Read16(std::span<const std::uint8_t> bytes, std::size_t at) {
  return static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8);
}

std::uint32_t Read32(std::span<const std::uint8_t> bytes, std::size_t at) {
  return Read16(bytes, at) | static_cast<std::uint32_t>(Read16(bytes, at + 2)) << 16;
}

bool HasFloatSubFormat(std::span<const std::uint8_t> bytes, std::size_t describedSize) {
  if (std::min(bytes.size(), describedSize) < kSubFormatOffset + kFloatSubFormat.size()) {
    return false;
  }
  return std::ranges::equal(bytes.subspan(kSubFormatOffset, kFloatSubFormat.size()), kFloatSubFormat);
}

}  // namespace

std::optional<WaveFormat> ReadWaveFormat(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < kBasicSize) {
    return std::nullopt;
  }
  WaveFormat format;
  format.formatTag = Read16(bytes, 0);
  format.channels = Read16(bytes, 2);
  format.sampleRate = Read32(bytes, 4);
  format.averageBytesPerSecond = Read32(bytes, 8);
  format.blockAlign = Read16(bytes, 12);
  format.bitsPerSample = Read16(bytes, 14);
  format.extraSize = Read16(bytes, 16);
  format.floatingPoint = format.formatTag == WaveFormat::kIeeeFloatTag ||
                         (format.formatTag == WaveFormat::kExtensibleTag &&
                          HasFloatSubFormat(bytes, kBasicSize + format.extraSize));
  return format;
}

}  // namespace brisolte
