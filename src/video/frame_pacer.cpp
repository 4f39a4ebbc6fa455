#include "video/frame_pacer.h"

#include <algorithm>

namespace brisolte {
namespace {

/// Sources jitter, so a frame may come up to a fifth of an interval early.
constexpr double kShareOfInterval = 0.8;

}  // namespace

FramePacer::FramePacer(std::int32_t frameRate) : intervalMs_(frameRate > 0 ? 1000 / frameRate : 0) {}

Arrival FramePacer::Arrive(std::int64_t nowMs) {
  Arrival arrival;
  if (firstFrameTimeMs_ == 0) {
    firstFrameTimeMs_ = nowMs;
    nextDueTimeMs_ = nowMs;
    lastFrameTimeMs_ = nowMs;
    arrival.isFirst = true;
  }
  if (nowMs < nextDueTimeMs_) {
    return arrival;
  }
  arrival.accepted = FrameTiming{nowMs - firstFrameTimeMs_, nowMs - lastFrameTimeMs_};
  const double step = static_cast<double>(intervalMs_) * kShareOfInterval;
  nextDueTimeMs_ = static_cast<std::int64_t>(step + static_cast<double>(nowMs));
  lastFrameTimeMs_ = nowMs;
  return arrival;
}

Arrival FramePacer::ArriveDue(std::int64_t nowMs) {
  const std::int64_t laterMs = std::max(nowMs, lastFrameTimeMs_ + 1);
  nextDueTimeMs_ = std::min(nextDueTimeMs_, laterMs);
  return Arrive(laterMs);
}

}  // namespace brisolte
