#pragma once

#include <cstdint>
#include <optional>

#include "encoder/encoder.h"
#include "encoder/mf/mf_platform.h"

namespace brisolte {

/// A sound stream of a sink writer.
struct AudioSinkStream {
  DWORD index = 0;
  WaveFormat format;  ///< of the samples that are handed over; its rate and alignment are not 0
};

/// What came of adding a sound.
struct AddedAudio {
  std::optional<AudioSinkStream> stream;
  bool spoilt = false;  ///< the sink writer now has a stream without an input, and cannot begin its file
};

/// Adds the sound of one source to a sink writer, encoded as AAC with `bitrate` bits per second, or as the
/// AAC next to that and to the format which the system has. No stream when a call fails or the format cannot
/// be taken, with an ERROR line.
AddedAudio AddAudioStream(MFPlatform& platform, IMFSinkWriter& writer, AudioStreamKind kind,
                          const WaveFormat& format, std::int32_t bitrate);

}  // namespace brisolte
