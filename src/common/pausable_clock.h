#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>

namespace brisolte {

/// The clock of a recording: a steady clock that stands still while the recording is paused. Any thread.
class PausableClock {
 public:
  using Moment = std::chrono::steady_clock::time_point;
  using Duration = std::chrono::steady_clock::duration;

  /// `now` may be a test's clock.
  explicit PausableClock(std::function<Moment()> now = std::chrono::steady_clock::now);

  /// What it shows: `now` without the pauses.
  Moment Now() const;

  /// False when it stands still already.
  bool Pause();
  /// False when it goes on already.
  bool Resume();
  bool paused() const;

  /// How far it is behind, by the pauses that have ended.
  Duration behind() const;

 private:
  const std::function<Moment()> now_;
  mutable std::mutex mutex_;
  // Guarded by `mutex_`.
  std::optional<Moment> pausedAt_;  ///< of `now_`; while it stands still
  Duration behind_{};
};

}  // namespace brisolte
