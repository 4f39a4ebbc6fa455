#include "encoder/ffmpeg/audio_input.h"

#include <cstdint>
#include <limits>

namespace brisolte {
namespace {

constexpr int kBitsPerByte = 8;
constexpr std::uint32_t kLargestInt = std::numeric_limits<int>::max();

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

std::optional<AudioInput> DescribeAudioInput(const WaveFormat* format, const CaptureSettings& settings) {
  return format != nullptr ? FromFormat(*format) : FromSettings(settings);
}

}  // namespace brisolte
