#include "encoder/mf/media_types.h"

#include <mfapi.h>

#include <variant>

#include "common/hresult_failure.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

// Keys of our own: readers of the media type know profile and level by them.
constexpr GUID kH264ProfileKey{0x8D0F5A49, 0x6B9B, 0x4F95, {0x9A, 0x8E, 0x4B, 0x8D, 0x8C, 0x0C, 0x0C, 0x88}};
constexpr GUID kH264LevelKey{0x8D0F5A4A, 0x6B9B, 0x4F95, {0x9A, 0x8E, 0x4B, 0x8D, 0x8C, 0x0C, 0x0C, 0x88}};
constexpr GUID kHevcProfileKey{0xDFA21BAE, 0x245A, 0x4C94, {0xA5, 0x6C, 0xD0, 0x1C, 0xC0, 0x0C, 0xB9, 0xD6}};
constexpr GUID kHevcLevelKey{0xDFA21BAF, 0x245A, 0x4C94, {0xA5, 0x6C, 0xD0, 0x1C, 0xC0, 0x0C, 0xB9, 0xD6}};

HRESULT SetValue(IMFAttributes& attributes, REFGUID key, MediaName value) {
  return attributes.SetGUID(key, MediaNameGuid(value));
}

HRESULT SetValue(IMFAttributes& attributes, REFGUID key, std::uint32_t value) {
  return attributes.SetUINT32(key, value);
}

HRESULT SetValue(IMFAttributes& attributes, REFGUID key, std::uint64_t value) {
  return attributes.SetUINT64(key, value);
}

}  // namespace

REFGUID MediaKeyGuid(MediaKey key) {
  switch (key) {
    case MediaKey::kMajorType:
      return MF_MT_MAJOR_TYPE;
    case MediaKey::kSubtype:
      return MF_MT_SUBTYPE;
    case MediaKey::kAverageBitrate:
      return MF_MT_AVG_BITRATE;
    case MediaKey::kH264Profile:
      return kH264ProfileKey;
    case MediaKey::kH264Level:
      return kH264LevelKey;
    case MediaKey::kHevcProfile:
      return kHevcProfileKey;
    case MediaKey::kHevcLevel:
      return kHevcLevelKey;
    case MediaKey::kFrameRate:
      return MF_MT_FRAME_RATE;
    case MediaKey::kMaxKeyframeSpacing:
      return MF_MT_MAX_KEYFRAME_SPACING;
    case MediaKey::kPixelAspectRatio:
      return MF_MT_PIXEL_ASPECT_RATIO;
    case MediaKey::kFrameSize:
      return MF_MT_FRAME_SIZE;
    case MediaKey::kInterlaceMode:
      return MF_MT_INTERLACE_MODE;
    case MediaKey::kAudioChannels:
      return MF_MT_AUDIO_NUM_CHANNELS;
    case MediaKey::kAudioSampleRate:
      return MF_MT_AUDIO_SAMPLES_PER_SECOND;
    case MediaKey::kAudioBitsPerSample:
      return MF_MT_AUDIO_BITS_PER_SAMPLE;
    case MediaKey::kAudioBlockAlignment:
      return MF_MT_AUDIO_BLOCK_ALIGNMENT;
    case MediaKey::kAudioBytesPerSecond:
      return MF_MT_AUDIO_AVG_BYTES_PER_SECOND;
  }
  return GUID_NULL;
}

REFGUID MediaNameGuid(MediaName name) {
  switch (name) {
    case MediaName::kVideo:
      return MFMediaType_Video;
    case MediaName::kAudio:
      return MFMediaType_Audio;
    case MediaName::kH264:
      return MFVideoFormat_H264;
    case MediaName::kHevc:
      return MFVideoFormat_HEVC;
    case MediaName::kNv12:
      return MFVideoFormat_NV12;
    case MediaName::kPcm:
      return MFAudioFormat_PCM;
    case MediaName::kFloat:
      return MFAudioFormat_Float;
    case MediaName::kAac:
      return MFAudioFormat_AAC;
  }
  return GUID_NULL;
}

ComPtr<IMFMediaType> MakeMediaType(MFPlatform& platform, const MediaAttributes& attributes,
                                   const char* creationFailure) {
  ComPtr<IMFMediaType> type;
  if (!SucceededOrLog(platform.CreateMediaType(type.GetAddressOf()), creationFailure)) {
    return nullptr;
  }
  for (const MediaAttribute& attribute : attributes) {
    REFGUID key = MediaKeyGuid(attribute.key);
    const HRESULT result =
        std::visit([&](const auto& value) { return SetValue(*type.Get(), key, value); }, attribute.value);
    if (!SucceededOrLog(result, attribute.failure)) {
      return nullptr;
    }
  }
  return type;
}

}  // namespace brisolte
