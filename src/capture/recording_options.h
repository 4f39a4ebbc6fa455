#pragma once

#include <functional>

namespace brisolte {

/// What a recording tells while it runs.
enum class RecordingEvent {
  kDiskFull,  ///< the volume is nearly full: the file was completed, nothing more goes into it
};

/// What is asked of recordings beyond `CaptureSettings`. As it is made, it asks for nothing.
struct RecordingOptions {
  /// Hears events, on whatever thread they happen; must not throw.
  std::function<void(RecordingEvent)> report = [](RecordingEvent /*event*/) {};
};

}  // namespace brisolte
