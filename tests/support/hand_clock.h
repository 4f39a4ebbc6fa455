#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "encoder/capture_clock.h"

namespace brisolte::testing {

/// A clock that a test sets, read by any thread. Outlives what it was given to.
class HandClock {
 public:
  void Set(std::int64_t milliseconds) { milliseconds_ = milliseconds; }

  SteadyNow now() const {
    return [this] {
      return CaptureClock::Moment() + std::chrono::hours(1) + std::chrono::milliseconds(milliseconds_.load());
    };
  }

 private:
  std::atomic<std::int64_t> milliseconds_ = 0;
};

}  // namespace brisolte::testing
