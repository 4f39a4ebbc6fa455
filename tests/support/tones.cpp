#include "support/tones.h"

#include <cmath>
#include <cstring>
#include <numbers>

namespace brisolte::testing {
namespace {

constexpr double kTwoPi = 2 * std::numbers::pi;

std::uint16_t BitsOf(SampleType type) {
  switch (type) {
    case SampleType::kUnsigned8:
      return 8;
    case SampleType::kSigned16:
      return 16;
    case SampleType::kSigned24Packed:
      return 24;
    case SampleType::kSigned32:
    case SampleType::kFloat32:
      return 32;
  }
  return 0;
}

/// The bits of one sample, the first byte lowest.
std::uint32_t Encoded(double value, const WaveFormat& format) {
  if (format.floatingPoint) {
    const auto sample = static_cast<float>(value);
    std::uint32_t bits = 0;
    std::memcpy(&bits, &sample, sizeof(bits));
    return bits;
  }
  const double scale = std::exp2(format.bitsPerSample - 1) - 1;
  const auto sample = static_cast<std::int64_t>(std::llround(value * scale));
  return static_cast<std::uint32_t>(format.bitsPerSample == 8 ? sample + 128 : sample);
}

}  // namespace

WaveFormat DeviceFormat(SampleType type, std::uint16_t channels, std::uint32_t rate, bool extensible) {
  WaveFormat format;
  format.floatingPoint = type == SampleType::kFloat32;
  const auto plainTag = format.floatingPoint ? WaveFormat::kIeeeFloatTag : WaveFormat::kPcmTag;
  format.formatTag = extensible ? WaveFormat::kExtensibleTag : plainTag;
  format.channels = channels;
  format.sampleRate = rate;
  format.bitsPerSample = BitsOf(type);
  format.blockAlign = static_cast<std::uint16_t>(channels * format.bitsPerSample / 8);
  format.averageBytesPerSecond = rate * format.blockAlign;
  format.extraSize = extensible ? 22 : 0;
  return format;
}

std::vector<std::uint8_t> ToneBytes(const WaveFormat& format, const std::vector<Tone>& tones,
                                    std::size_t first, std::size_t count) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(count * format.blockAlign);
  for (std::size_t i = first; i < first + count; ++i) {
    const double seconds = static_cast<double>(i) / format.sampleRate;
    for (std::size_t channel = 0; channel < format.channels; ++channel) {
      const Tone tone = channel < tones.size() ? tones[channel] : Tone{};
      const std::uint32_t bits = Encoded(tone.level * std::sin(kTwoPi * tone.frequency * seconds), format);
      for (int shift = 0; shift < format.bitsPerSample; shift += 8) {
        bytes.push_back(static_cast<std::uint8_t>(bits >> shift));
      }
    }
  }
  return bytes;
}

ToneFit FitTone(std::span<const float> samples, double frequency, double rate) {
  double sine = 0;
  double cosine = 0;
  double power = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double phase = kTwoPi * frequency * static_cast<double>(i) / rate;
    sine += samples[i] * std::sin(phase);
    cosine += samples[i] * std::cos(phase);
    power += double{samples[i]} * samples[i];
  }
  const auto count = static_cast<double>(samples.size());
  const double level = 2 * std::hypot(sine, cosine) / count;
  return {level, std::sqrt(std::fmax(0, power / count - level * level / 2))};
}

}  // namespace brisolte::testing
