#pragma once

#include <functional>

namespace brisolte {

/// What a recording tells while it runs.
enum class RecordingEvent {
  kCursorStays,  ///< the pointer could not be left out of the picture
  kBorderStays,  ///< the system could not be kept from drawing its border
  kDiskFull,     ///< the volume is nearly full: the file was completed, nothing more goes into it
};

/// What is asked of recordings beyond `CaptureSettings`. As it is made, it asks for nothing.
struct RecordingOptions {
  /// Whether an MP4 or MOV of FFmpeg's can be played up to its last two seconds at any moment of its
  /// recording, whatever happens to the process. Others can anyhow.
  bool playableThroughout = false;
  /// Whether the pointer is in the picture. Where it cannot be left out, `report` hears of it.
  bool showsCursor = true;
  /// Whether the system may draw its border around what is recorded. The same.
  bool showsBorder = true;
  /// Hears events, on whatever thread they happen; must not throw.
  std::function<void(RecordingEvent)> report = [](RecordingEvent /*event*/) {};
};

}  // namespace brisolte
