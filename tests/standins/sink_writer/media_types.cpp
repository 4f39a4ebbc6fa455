#include "sink_writer/media_types.h"

#include <mfapi.h>

#include "sink_writer/aac_formats.h"

namespace brisolte::standins {
namespace {

GUID Name(IMFMediaType& type, REFGUID key) {
  GUID name = GUID_NULL;
  type.GetGUID(key, &name);
  return name;
}

UINT32 Number(IMFMediaType& type, REFGUID key) {
  UINT32 number = 0;
  type.GetUINT32(key, &number);
  return number;
}

/// The two numbers of a size or ratio.
struct Pair {
  Pair(IMFMediaType& type, REFGUID key) {
    UINT64 both = 0;
    type.GetUINT64(key, &both);
    first = static_cast<UINT32>(both >> 32);
    second = static_cast<UINT32>(both);
  }
  bool operator==(const Pair&) const = default;

  UINT32 first = 0;
  UINT32 second = 0;
};

}  // namespace

bool IsStreamType(IMFMediaType& output) {
  const GUID subtype = Name(output, MF_MT_SUBTYPE);
  return subtype == MFVideoFormat_H264 || subtype == MFVideoFormat_HEVC || subtype == MFAudioFormat_AAC;
}

std::optional<VideoTrackType> VideoTypeOf(IMFMediaType& output, IMFMediaType& input) {
  const GUID subtype = Name(output, MF_MT_SUBTYPE);
  const Pair size(output, MF_MT_FRAME_SIZE);
  const Pair rate(output, MF_MT_FRAME_RATE);
  const UINT32 bitrate = Number(output, MF_MT_AVG_BITRATE);
  const bool fits = Name(input, MF_MT_MAJOR_TYPE) == MFMediaType_Video &&
                    Name(input, MF_MT_SUBTYPE) == MFVideoFormat_NV12 &&
                    Pair(input, MF_MT_FRAME_SIZE) == size && size.first % 2 == 0 && size.second % 2 == 0 &&
                    size.first > 0 && size.second > 0 && rate.first > 0 && rate.second == 1 && bitrate > 0;
  if (!fits) {
    return std::nullopt;
  }
  return VideoTrackType{subtype == MFVideoFormat_HEVC, static_cast<int>(size.first),
                        static_cast<int>(size.second), static_cast<int>(rate.first), bitrate};
}

std::optional<AudioTrackType> AudioTypeOf(IMFMediaType& output, IMFMediaType& input) {
  const AacFormat aac{Number(output, MF_MT_AUDIO_SAMPLES_PER_SECOND),
                      Number(output, MF_MT_AUDIO_NUM_CHANNELS),
                      Number(output, MF_MT_AUDIO_AVG_BYTES_PER_SECOND)};
  const GUID subtype = Name(input, MF_MT_SUBTYPE);
  const UINT32 channels = Number(input, MF_MT_AUDIO_NUM_CHANNELS);
  const UINT32 rate = Number(input, MF_MT_AUDIO_SAMPLES_PER_SECOND);
  const UINT32 bits = Number(input, MF_MT_AUDIO_BITS_PER_SAMPLE);
  const bool fits = Name(input, MF_MT_MAJOR_TYPE) == MFMediaType_Audio && IsAacFormat(aac) &&
                    Number(output, MF_MT_AUDIO_BITS_PER_SAMPLE) == 16 &&
                    (subtype == MFAudioFormat_Float || subtype == MFAudioFormat_PCM) && channels > 0 &&
                    channels <= 8 && rate > 0 &&
                    Number(input, MF_MT_AUDIO_BLOCK_ALIGNMENT) == channels * bits / 8 &&
                    Number(input, MF_MT_AUDIO_AVG_BYTES_PER_SECOND) == rate * channels * bits / 8;
  if (!fits) {
    return std::nullopt;
  }
  return AudioTrackType{subtype == MFAudioFormat_Float,      static_cast<int>(bits),
                        static_cast<int>(channels),          static_cast<int>(rate),
                        static_cast<int>(aac.channels),      static_cast<int>(aac.sampleRate),
                        std::int64_t{8} * aac.bytesPerSecond};
}

}  // namespace brisolte::standins
