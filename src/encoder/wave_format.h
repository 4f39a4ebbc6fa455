#pragma once

#include <cstdint>

namespace brisolte {

/// How one sample is laid out in a device's buffers.
enum class SampleType { kUnsigned8, kSigned16, kSigned24Packed, kSigned32, kFloat32 };

/// The format of a device's interleaved samples, without the platform's headers.
struct WaveFormat {
  SampleType sampleType = SampleType::kFloat32;
  std::uint32_t sampleRate = 0;  ///< Hz
  std::uint16_t channels = 0;
  std::uint16_t blockAlign = 0;  ///< bytes of one sample of all channels
};

}  // namespace brisolte
