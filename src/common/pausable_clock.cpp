#include "common/pausable_clock.h"

#include <utility>

namespace brisolte {

PausableClock::PausableClock(std::function<Moment()> now) : now_(std::move(now)) {}

PausableClock::Moment PausableClock::Now() const {
  const std::scoped_lock lock(mutex_);
  return pausedAt_.value_or(now_()) - behind_;
}

bool PausableClock::Pause() {
  const std::scoped_lock lock(mutex_);
  if (pausedAt_) {
    return false;
  }
  pausedAt_ = now_();
  return true;
}

bool PausableClock::Resume() {
  const std::scoped_lock lock(mutex_);
  if (!pausedAt_) {
    return false;
  }
  behind_ += now_() - *pausedAt_;
  pausedAt_.reset();
  return true;
}

bool PausableClock::paused() const {
  const std::scoped_lock lock(mutex_);
  return pausedAt_.has_value();
}

PausableClock::Duration PausableClock::behind() const {
  const std::scoped_lock lock(mutex_);
  return behind_;
}

}  // namespace brisolte
