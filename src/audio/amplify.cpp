#include "audio/amplify.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace brisolte {
namespace {

/// Whole numbers of so many bytes, little-endian; `flipped` is the bit that counts from the other end.
template <int kBytes, std::uint32_t flipped = 0>
struct WholeNumbers {
  static constexpr int kSize = kBytes;
  static constexpr int kSpare = 8 * (4 - kBytes);
  static constexpr double kFullScale = 2'147'483'648.0;

  static double Read(const std::uint8_t* sample) {
    std::uint32_t bits = 0;
    for (int i = 0; i < kBytes; ++i) {
      bits |= std::uint32_t{sample[i]} << (kSpare + 8 * i);
    }
    return static_cast<std::int32_t>(bits ^ (flipped << kSpare)) / kFullScale;
  }

  static void Write(double value, std::uint8_t* sample) {
    constexpr double kSteps = 1U << (8 * kBytes - 1);
    const double rounded = std::clamp(std::round(value * kSteps), -kSteps, kSteps - 1);
    const auto bits = static_cast<std::uint32_t>(static_cast<std::int32_t>(rounded)) ^ flipped;
    for (int i = 0; i < kBytes; ++i) {
      sample[i] = static_cast<std::uint8_t>(bits >> (8 * i));
    }
  }
};

struct FloatingPoint {
  static constexpr int kSize = 4;

  static double Read(const std::uint8_t* sample) {
    float value = 0;
    std::memcpy(&value, sample, sizeof value);
    return value;
  }

  static void Write(double value, std::uint8_t* sample) {
    const auto single = static_cast<float>(value);
    std::memcpy(sample, &single, sizeof single);
  }
};

template <typename Samples>
float AmplifySamples(std::size_t channels, std::span<std::uint8_t> bytes, float from, float to) {
  const std::size_t count = bytes.size() / Samples::kSize;
  const bool unchanged = from == 1 && to == 1;
  double loudest = 0;
  for (std::size_t i = 0; i < count; ++i) {
    std::uint8_t* const sample = bytes.data() + i * Samples::kSize;
    double value = Samples::Read(sample);
    if (!unchanged) {
      const double passed =
          static_cast<double>(i / channels + 1) / static_cast<double>((count - 1) / channels + 1);
      value *= from + (to - from) * passed;
      Samples::Write(value, sample);
    }
    // What is not a number compares as false and counts as silence.
    loudest = std::abs(value) > loudest ? std::abs(value) : loudest;
  }
  return static_cast<float>(loudest);
}

}  // namespace

float Amplify(const WaveFormat& format, std::span<std::uint8_t> bytes, float from, float to) {
  const auto type = SampleTypeOf(format);
  const std::size_t channels = std::max<std::size_t>(format.channels, 1);
  if (!type) {
    return 0;
  }
  switch (*type) {
    case SampleType::kUnsigned8:
      return AmplifySamples<WholeNumbers<1, 0x80>>(channels, bytes, from, to);
    case SampleType::kSigned16:
      return AmplifySamples<WholeNumbers<2>>(channels, bytes, from, to);
    case SampleType::kSigned24Packed:
      return AmplifySamples<WholeNumbers<3>>(channels, bytes, from, to);
    case SampleType::kSigned32:
      return AmplifySamples<WholeNumbers<4>>(channels, bytes, from, to);
    case SampleType::kFloat32:
      return AmplifySamples<FloatingPoint>(channels, bytes, from, to);
  }
  return 0;
}

}  // namespace brisolte
