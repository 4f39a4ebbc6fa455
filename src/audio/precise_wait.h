#pragma once

#include <chrono>

#include "common/handle.h"

namespace brisolte {

/// A timer that does not go by the clock's tick. Null where the system has none: before Windows 10 1803.
Handle MakeHighResolutionTimer();

/// Waits of a few milliseconds that are as long as they are asked for. Ordinary ones end with the clock's
/// tick, every 15.6 ms unless this very process asks for finer ones, and an endpoint keeps only some 22 ms of
/// sound. Made and used on one thread.
class PreciseWait {
 public:
  /// Without a timer it asks for a tick a millisecond as long as it lives.
  explicit PreciseWait(Handle timer = MakeHighResolutionTimer());
  PreciseWait(const PreciseWait&) = delete;
  PreciseWait& operator=(const PreciseWait&) = delete;
  ~PreciseWait();

  void For(std::chrono::milliseconds time) const;

 private:
  const Handle timer_;
  const bool finerTicks_;
};

}  // namespace brisolte
