#pragma once

#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

#include "capture/capture_settings.h"
#include "encoder/mf/aac_type.h"
#include "encoder/wave_format.h"

namespace brisolte {

/// The attributes of the media types, for which the platform has GUIDs.
enum class MediaKey {
  kMajorType,
  kSubtype,
  kAverageBitrate,
  kH264Profile,
  kH264Level,
  kHevcProfile,
  kHevcLevel,
  kFrameRate,
  kMaxKeyframeSpacing,
  kPixelAspectRatio,
  kFrameSize,
  kInterlaceMode,
  kAudioChannels,
  kAudioSampleRate,
  kAudioBitsPerSample,
  kAudioBlockAlignment,
  kAudioBytesPerSecond,
};

/// The values of attributes that are GUIDs too.
enum class MediaName { kVideo, kAudio, kH264, kHevc, kNv12, kPcm, kFloat, kAac };

/// One attribute to set, and what the log says when that fails.
struct MediaAttribute {
  MediaKey key;
  std::variant<MediaName, std::uint32_t, std::uint64_t> value;
  const char* failure;
};

/// What describes a media type, in the order in which it is set.
using MediaAttributes = std::vector<MediaAttribute>;

/// The encoded video in the file, by the settings' encoder name, bit rate and frame rate.
MediaAttributes VideoOutputAttributes(const CaptureSettings& settings, std::uint32_t width,
                                      std::uint32_t height);

/// The frames that are handed over.
MediaAttributes VideoInputAttributes(const CaptureSettings& settings, std::uint32_t width,
                                     std::uint32_t height);

/// How a device's samples are called: as floating point or PCM. None for a tag that is neither.
std::optional<MediaName> AudioInputSubtype(const WaveFormat& format);

/// The samples that are handed over, as the device has them.
MediaAttributes AudioInputAttributes(const WaveFormat& format, MediaName subtype);

/// The encoded sound that such samples ask for. `bitrate` in bits per second.
AacType WantedAacType(const WaveFormat& format, std::int32_t bitrate);

/// The encoded sound in the file.
MediaAttributes AudioOutputAttributes(const AacType& type);

}  // namespace brisolte
