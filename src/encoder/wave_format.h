#pragma once

#include <cstdint>
#include <optional>

namespace brisolte {

/// How one sample lies in a device's buffers. 24 packed bits take three bytes.
enum class SampleType { kUnsigned8, kSigned16, kSigned24Packed, kSigned32, kFloat32 };

/// The format of a device's interleaved samples as the platform describes it, without the platform's headers.
struct WaveFormat {
  static constexpr std::uint16_t kPcmTag = 1;
  static constexpr std::uint16_t kIeeeFloatTag = 3;
  static constexpr std::uint16_t kExtensibleTag = 0xFFFE;

  std::uint16_t formatTag = 0;  ///< one of the tags above, or another of the platform's
  std::uint16_t channels = 0;
  std::uint32_t sampleRate = 0;  ///< Hz
  std::uint32_t averageBytesPerSecond = 0;
  std::uint16_t blockAlign = 0;     ///< bytes of one sample of all channels
  std::uint16_t bitsPerSample = 0;  ///< of the container of one sample
  std::uint16_t extraSize = 0;      ///< bytes of the description beyond the basic format
  bool floatingPoint = false;       ///< also for the extensible tag, whose sub-format decides
};

/// The layout of the format's samples; none when the width is not one that devices are known to use.
constexpr std::optional<SampleType> SampleTypeOf(const WaveFormat& format) {
  if (format.floatingPoint) {
    return format.bitsPerSample == 32 ? std::optional(SampleType::kFloat32) : std::nullopt;
  }
  switch (format.bitsPerSample) {
    case 8:
      return SampleType::kUnsigned8;
    case 16:
      return SampleType::kSigned16;
    case 24:
      return SampleType::kSigned24Packed;
    case 32:
      return SampleType::kSigned32;
    default:
      return std::nullopt;
  }
}

}  // namespace brisolte
