#pragma once

#include <windows.h>

#include <chrono>
#include <memory>

namespace brisolte {

struct TimerCloser {
  using pointer = HANDLE;
  void operator()(HANDLE timer) const { CloseHandle(timer); }
};
using TimerHandle = std::unique_ptr<HANDLE, TimerCloser>;

/// A timer that does not go by the clock's tick. Null where the system has none: before Windows 10 1803.
TimerHandle MakeHighResolutionTimer();

/// Waits of a few milliseconds that are as long as they are asked for. Ordinary ones end with the clock's
/// tick, every 15.6 ms unless this very process asks for finer ones, and an endpoint keeps only some 22 ms of
/// sound. Made and used on one thread.
class PreciseWait {
 public:
  /// Without a timer it asks for a tick a millisecond as long as it lives.
  explicit PreciseWait(TimerHandle timer = MakeHighResolutionTimer());
  PreciseWait(const PreciseWait&) = delete;
  PreciseWait& operator=(const PreciseWait&) = delete;
  ~PreciseWait();

  void For(std::chrono::milliseconds time) const;

 private:
  const TimerHandle timer_;
  const bool finerTicks_;
};

}  // namespace brisolte
