#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace brisolte {

/// What a recording tells while it runs.
enum class RecordingEvent {
  kCursorStays,  ///< the pointer could not be left out of the picture
  kBorderStays,  ///< the system could not be kept from drawing its border
  kDiskFull,     ///< the volume is nearly full: the file was completed, nothing more goes into it
};

/// A size in pixels.
struct PictureSize {
  std::int32_t width = 0;
  std::int32_t height = 0;

  friend bool operator==(const PictureSize&, const PictureSize&) = default;
};

/// A name in FFmpeg's tables of options, and a value as FFmpeg reads it.
struct EncoderOption {
  std::string name;
  std::string value;
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
  /// Whether the pointer is in the picture. Where it cannot be left out, `report` hears of it.
  bool showsCursor = true;
  /// Whether the system may draw its border around what is recorded. The same.
  bool showsBorder = true;
  /// FFmpeg's encoders get pictures that fit into this size: larger ones are made smaller and keep their
  /// ratio.
  std::optional<PictureSize> largestPicture;
  /// What the encoder of FFmpeg's is told beyond what it is told anyway; the later of two of one name holds.
  std::vector<EncoderOption> encoderOptions;
  /// Hears events, on whatever thread they happen; must not throw.
  std::function<void(RecordingEvent)> report = [](RecordingEvent /*event*/) {};
};

}  // namespace brisolte
