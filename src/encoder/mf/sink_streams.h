#pragma once

#include <cstdint>
#include <optional>

#include "capture/capture_settings.h"
#include "encoder/encoder.h"
#include "encoder/mf/mf_platform.h"

namespace brisolte {

/// The video stream of a sink writer.
struct VideoSinkStream {
  DWORD index = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

/// A sound stream of a sink writer.
struct AudioSinkStream {
  DWORD index = 0;
  WaveFormat format;  ///< of the samples that are handed over; its rate and alignment are not 0
};

/// The streams of one recording; what was not added is empty.
struct SinkStreams {
  std::optional<VideoSinkStream> video;
  std::optional<AudioSinkStream> microphone;
  std::optional<AudioSinkStream> speaker;
};

/// Adds the video stream to a sink writer: NV12 frames of this even size, encoded as the settings say. With a
/// manager the encoder takes them as textures of the manager's device; it may be null. None when a
/// call fails, with an ERROR line.
std::optional<VideoSinkStream> AddVideoStream(MFPlatform& platform, IMFSinkWriter& writer,
                                              const CaptureSettings& settings, std::uint32_t width,
                                              std::uint32_t height, IMFDXGIDeviceManager* manager);

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
