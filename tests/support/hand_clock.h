#pragma once

#include <chrono>
#include <cstdint>

#include "encoder/capture_clock.h"

namespace brisolte::testing {

/// A clock that a test sets. Outlives what it was given to.
class HandClock {
 public:
  void Set(std::int64_t milliseconds) {
    time_ = CaptureClock::Moment() + std::chrono::hours(1) + std::chrono::milliseconds(milliseconds);
  }

  SteadyNow now() const {
    return [this] { return time_; };
  }

 private:
  CaptureClock::Moment time_ = CaptureClock::Moment() + std::chrono::hours(1);
};

}  // namespace brisolte::testing
