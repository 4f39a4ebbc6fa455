#include "encoder/mf/media_attributes.h"

namespace brisolte {
namespace {

constexpr std::uint32_t kProgressive = 2;
constexpr std::uint32_t kEncodedBitsPerSample = 16;

constexpr std::uint32_t kH264Baseline = 66;
constexpr std::uint32_t kHevcMain = 1;
constexpr std::uint32_t kLevel4 = 40;

/// Two numbers as one attribute holds them: a size or a ratio.
constexpr std::uint64_t Pair(std::uint32_t first, std::uint32_t second) {
  return std::uint64_t{first} << 32 | second;
}

std::uint32_t FrameRate(const CaptureSettings& settings) {
  return static_cast<std::uint32_t>(settings.frameRate);
}

void AppendEncoder(MediaAttributes& attributes, const CaptureSettings& settings) {
  const bool h264 = settings.encoderName == "mf_h264";
  if (!h264 && settings.encoderName != "mf_hevc") {
    return;
  }
  const auto bitrate = static_cast<std::uint32_t>(settings.bitrate);
  attributes.insert(
      attributes.end(),
      {{MediaKey::kSubtype, h264 ? MediaName::kH264 : MediaName::kHevc, "Failed to set subtype: "},
       {MediaKey::kAverageBitrate, bitrate, "Failed to set average bitrate: "},
       {h264 ? MediaKey::kH264Profile : MediaKey::kHevcProfile, h264 ? kH264Baseline : kHevcMain,
        "Failed to set profile: "},
       {h264 ? MediaKey::kH264Level : MediaKey::kHevcLevel, kLevel4, "Failed to set level: "}});
}

}  // namespace

MediaAttributes VideoOutputAttributes(const CaptureSettings& settings, std::uint32_t width,
                                      std::uint32_t height) {
  MediaAttributes attributes{{MediaKey::kMajorType, MediaName::kVideo, "Failed to set major type: "}};
  AppendEncoder(attributes, settings);
  attributes.insert(
      attributes.end(),
      {{MediaKey::kFrameRate, Pair(FrameRate(settings), 1), "Failed to set frame rate: "},
       // As many frames as a second has: a key frame every second.
       {MediaKey::kMaxKeyframeSpacing, FrameRate(settings), "Failed to set max keyframe spacing: "},
       {MediaKey::kPixelAspectRatio, Pair(1, 1), "Failed to set pixel aspect ratio: "},
       {MediaKey::kFrameSize, Pair(width, height), "Failed to set frame size: "},
       {MediaKey::kInterlaceMode, kProgressive, "Failed to set interlace mode: "}});
  return attributes;
}

MediaAttributes VideoInputAttributes(const CaptureSettings& settings, std::uint32_t width,
                                     std::uint32_t height) {
  return {{MediaKey::kMajorType, MediaName::kVideo, "Failed to set input major type: "},
          {MediaKey::kSubtype, MediaName::kNv12, "Failed to set input subtype: "},
          {MediaKey::kFrameSize, Pair(width, height), "Failed to set input frame size: "},
          {MediaKey::kFrameRate, Pair(FrameRate(settings), 1), "Failed to set input frame rate: "},
          {MediaKey::kPixelAspectRatio, Pair(1, 1), "Failed to set input pixel aspect ratio: "}};
}

std::optional<MediaName> AudioInputSubtype(const WaveFormat& format) {
  switch (format.formatTag) {
    case WaveFormat::kIeeeFloatTag:
      return MediaName::kFloat;
    case WaveFormat::kPcmTag:
      return MediaName::kPcm;
    case WaveFormat::kExtensibleTag:
      return format.floatingPoint ? MediaName::kFloat : MediaName::kPcm;
    default:
      return std::nullopt;
  }
}

MediaAttributes AudioInputAttributes(const WaveFormat& format, MediaName subtype) {
  const std::uint32_t channels = format.channels;
  const std::uint32_t bitsPerSample = format.bitsPerSample;
  const std::uint32_t blockAlign = format.blockAlign;
  return {{MediaKey::kMajorType, MediaName::kAudio, "Failed to set major type: "},
          {MediaKey::kSubtype, subtype, "Failed to set subtype: "},
          {MediaKey::kAudioChannels, channels, "Failed to set channels: "},
          {MediaKey::kAudioSampleRate, format.sampleRate, "Failed to set sample rate: "},
          {MediaKey::kAudioBitsPerSample, bitsPerSample, "Failed to set bits per sample: "},
          {MediaKey::kAudioBlockAlignment, blockAlign, "Failed to set block alignment: "},
          {MediaKey::kAudioBytesPerSecond, format.averageBytesPerSecond,
           "Failed to set average bytes per second: "}};
}

AacType WantedAacType(const WaveFormat& format, std::int32_t bitrate) {
  return {format.sampleRate, format.channels, static_cast<std::uint32_t>(bitrate / 8)};
}

MediaAttributes AudioOutputAttributes(const AacType& type) {
  return {{MediaKey::kMajorType, MediaName::kAudio, "Failed to set output major type: "},
          {MediaKey::kSubtype, MediaName::kAac, "Failed to set output subtype: "},
          {MediaKey::kAudioChannels, type.channels, "Failed to set output channels: "},
          {MediaKey::kAudioSampleRate, type.sampleRate, "Failed to set output sample rate: "},
          {MediaKey::kAudioBitsPerSample, kEncodedBitsPerSample, "Failed to set output bits per sample: "},
          {MediaKey::kAudioBytesPerSecond, type.bytesPerSecond, "Failed to set output bitrate: "}};
}

}  // namespace brisolte
