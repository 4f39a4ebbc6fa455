#include "mf/media_names.h"

#include <mfapi.h>
#include <mfidl.h>
#include <mfreadwrite.h>

#include <array>
#include <cstdio>

namespace brisolte::testing {
namespace {

struct Name {
  const GUID* guid;
  const char* text;
};

#define NAME(guid) \
  Name {           \
    &guid, #guid   \
  }

const std::array kNames{
    NAME(MF_TRANSCODE_CONTAINERTYPE),
    NAME(MFTranscodeContainerType_MPEG4),
    NAME(MF_SINK_WRITER_D3D_MANAGER),
    NAME(MF_MT_MAJOR_TYPE),
    NAME(MF_MT_SUBTYPE),
    NAME(MF_MT_AVG_BITRATE),
    NAME(MF_MT_FRAME_RATE),
    NAME(MF_MT_MAX_KEYFRAME_SPACING),
    NAME(MF_MT_PIXEL_ASPECT_RATIO),
    NAME(MF_MT_FRAME_SIZE),
    NAME(MF_MT_INTERLACE_MODE),
    NAME(MF_MT_AUDIO_NUM_CHANNELS),
    NAME(MF_MT_AUDIO_SAMPLES_PER_SECOND),
    NAME(MF_MT_AUDIO_BITS_PER_SAMPLE),
    NAME(MF_MT_AUDIO_BLOCK_ALIGNMENT),
    NAME(MF_MT_AUDIO_AVG_BYTES_PER_SECOND),
    NAME(MFMediaType_Video),
    NAME(MFMediaType_Audio),
    NAME(MFVideoFormat_H264),
    NAME(MFVideoFormat_HEVC),
    NAME(MFVideoFormat_NV12),
    NAME(MFAudioFormat_PCM),
    NAME(MFAudioFormat_Float),
    NAME(MFAudioFormat_AAC),
};

#undef NAME

}  // namespace

std::string MediaGuidText(const GUID& guid) {
  for (const Name& name : kNames) {
    if (*name.guid == guid) {
      return name.text;
    }
  }
  const auto& d = guid.Data4;
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "{%08lX-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                static_cast<unsigned long>(guid.Data1), guid.Data2, guid.Data3, d[0], d[1], d[2], d[3], d[4],
                d[5], d[6], d[7]);
  return text.data();
}

}  // namespace brisolte::testing
