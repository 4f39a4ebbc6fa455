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

const std::array kNames{
    Name{&MF_TRANSCODE_CONTAINERTYPE, "MF_TRANSCODE_CONTAINERTYPE"},
    Name{&MFTranscodeContainerType_MPEG4, "MFTranscodeContainerType_MPEG4"},
    Name{&MF_SINK_WRITER_D3D_MANAGER, "MF_SINK_WRITER_D3D_MANAGER"},
    Name{&MF_MT_MAJOR_TYPE, "MF_MT_MAJOR_TYPE"},
    Name{&MF_MT_SUBTYPE, "MF_MT_SUBTYPE"},
    Name{&MF_MT_AVG_BITRATE, "MF_MT_AVG_BITRATE"},
    Name{&MF_MT_FRAME_RATE, "MF_MT_FRAME_RATE"},
    Name{&MF_MT_MAX_KEYFRAME_SPACING, "MF_MT_MAX_KEYFRAME_SPACING"},
    Name{&MF_MT_PIXEL_ASPECT_RATIO, "MF_MT_PIXEL_ASPECT_RATIO"},
    Name{&MF_MT_FRAME_SIZE, "MF_MT_FRAME_SIZE"},
    Name{&MF_MT_INTERLACE_MODE, "MF_MT_INTERLACE_MODE"},
    Name{&MF_MT_AUDIO_NUM_CHANNELS, "MF_MT_AUDIO_NUM_CHANNELS"},
    Name{&MF_MT_AUDIO_SAMPLES_PER_SECOND, "MF_MT_AUDIO_SAMPLES_PER_SECOND"},
    Name{&MF_MT_AUDIO_BITS_PER_SAMPLE, "MF_MT_AUDIO_BITS_PER_SAMPLE"},
    Name{&MF_MT_AUDIO_BLOCK_ALIGNMENT, "MF_MT_AUDIO_BLOCK_ALIGNMENT"},
    Name{&MF_MT_AUDIO_AVG_BYTES_PER_SECOND, "MF_MT_AUDIO_AVG_BYTES_PER_SECOND"},
    Name{&MFMediaType_Video, "MFMediaType_Video"},
    Name{&MFMediaType_Audio, "MFMediaType_Audio"},
    Name{&MFVideoFormat_H264, "MFVideoFormat_H264"},
    Name{&MFVideoFormat_HEVC, "MFVideoFormat_HEVC"},
    Name{&MFVideoFormat_NV12, "MFVideoFormat_NV12"},
    Name{&MFAudioFormat_PCM, "MFAudioFormat_PCM"},
    Name{&MFAudioFormat_Float, "MFAudioFormat_Float"},
    Name{&MFAudioFormat_AAC, "MFAudioFormat_AAC"},
};

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
