#include "encoder/ffmpeg/audio_input.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

namespace brisolte {
namespace {

constexpr int kBitsPerByte = 8;
constexpr std::uint32_t kLargestInt = std::numeric_limits<int>::max();

/// The rates of MP3.
constexpr std::array kMp3Rates{8'000, 11'025, 12'000, 16'000, 22'050, 24'000, 32'000, 44'100, 48'000};

/// Converters between rates further apart than these take memory without bound.
constexpr int kLowestDeviceRate = 1'000;
constexpr int kHighestDeviceRate = 768'000;

/// Compressed formats have other tags, whatever their width.
bool IsUncompressed(const WaveFormat& format) {
  return format.formatTag == WaveFormat::kPcmTag || format.formatTag == WaveFormat::kIeeeFloatTag ||
         format.formatTag == WaveFormat::kExtensibleTag;
}

std::optional<AudioInput> FromSettings(const CaptureSettings& settings) {
  constexpr int kFloatBits = 32;
  if (settings.audioChannels < 1 || settings.audioSampleRate < 1) {
    return std::nullopt;
  }
  return AudioInput{SampleType::kFloat32, kFloatBits, settings.audioChannels, settings.audioSampleRate,
                    static_cast<std::size_t>(settings.audioChannels) * kFloatBits / kBitsPerByte};
}

std::optional<AudioInput> FromFormat(const WaveFormat& format) {
  const auto sampleType = SampleTypeOf(format);
  const std::size_t blockBytes = std::size_t{format.channels} * format.bitsPerSample / kBitsPerByte;
  if (!sampleType || !IsUncompressed(format) || format.channels == 0 || format.sampleRate == 0 ||
      format.sampleRate > kLargestInt || blockBytes != format.blockAlign) {
    return std::nullopt;
  }
  return AudioInput{*sampleType, format.bitsPerSample, format.channels, static_cast<int>(format.sampleRate),
                    blockBytes};
}

}  // namespace

int AudioInput::encodedChannels() const {
  constexpr int kMostMixed = 8;
  constexpr int kStereo = 2;
  return channels <= kMostMixed ? std::min(channels, kStereo) : channels;
}

int AudioInput::encodedRate() const {
  if (sampleRate < kLowestDeviceRate || sampleRate > kHighestDeviceRate) {
    return sampleRate;
  }
  for (const int rate : kMp3Rates) {
    if (rate >= sampleRate) {
      return rate;
    }
  }
  // Whole multiples convert best.
  constexpr int kDiscRate = 44'100;
  return sampleRate % kDiscRate == 0 ? kDiscRate : kMp3Rates.back();
}

std::optional<AudioInput> DescribeAudioInput(const WaveFormat* format, const CaptureSettings& settings) {
  return format != nullptr ? FromFormat(*format) : FromSettings(settings);
}

}  // namespace brisolte
