#pragma once

#include <atomic>
#include <chrono>
#include <functional>

namespace brisolte {

/// A stream that is asked for sound again and again.
class PolledStream {
 public:
  PolledStream() = default;
  PolledStream(const PolledStream&) = delete;
  PolledStream& operator=(const PolledStream&) = delete;
  virtual ~PolledStream() = default;

  /// Passes on what is waiting, unless `running` is clear. True when something was taken.
  virtual bool Poll(const std::atomic<bool>& running) = 0;
};

/// Polls both streams until `running` is cleared, without a pause while sound flows; when neither stream
/// delivered, `wait` is to last a millisecond. A standard exception of a poll is logged and ends only that
/// step.
void RunCaptureLoop(const std::atomic<bool>& running, PolledStream& microphone, PolledStream& speaker,
                    const std::function<void(std::chrono::milliseconds)>& wait);

}  // namespace brisolte
