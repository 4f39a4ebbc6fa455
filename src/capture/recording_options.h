#pragma once

#include <cstdint>
#include <functional>

namespace brisolte {

/// What a recording tells while it runs.
enum class RecordingEvent {
  kDiskFull,  ///< the volume is nearly full: the file was completed, nothing more goes into it
};

enum class SoundCodec { kMp3, kAac, kOpus };

/// How FFmpeg encodes each sound.
struct SoundOptions {
  SoundCodec codec = SoundCodec::kMp3;
  std::int32_t bitRate = 0;  ///< bits per second; 0: what is usual for the codec
};

/// What is asked of recordings beyond `CaptureSettings`. As it is made, it asks for nothing.
struct RecordingOptions {
  /// Whether an MP4 or MOV of FFmpeg's can be played up to its last two seconds at any moment of its
  /// recording, whatever happens to the process. Others can anyhow.
  bool playableThroughout = false;
  SoundOptions sound;
  /// Hears events, on whatever thread they happen; must not throw.
  std::function<void(RecordingEvent)> report = [](RecordingEvent /*event*/) {};
};

}  // namespace brisolte
