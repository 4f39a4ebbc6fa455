#include "encoder/capture_clock.h"

#include <algorithm>

namespace brisolte {
namespace {

using std::chrono::milliseconds;

/// Beyond this, times in nanoseconds would leave their range; no recording lasts so long.
constexpr milliseconds kLongestRecording = std::chrono::years(10);

}  // namespace

void CaptureClock::FrameArrived(const VideoFrame& frame, Moment arrival) {
  const milliseconds captured(frame.timestamp);
  const milliseconds delay(frame.delay);
  if (captured.count() < 0 || captured > kLongestRecording || delay.count() < 0 ||
      delay > kLongestRecording) {
    return;
  }
  // Where its delay is unknown, a frame arrives late by its conversion and by its wait for the ones before
  // it. The one that came with the least delay tells the time best.
  const Moment start = arrival - delay - captured;
  start_ = start_ ? std::min(*start_, start) : start;
}

std::optional<std::int64_t> CaptureClock::TimeAt(Moment moment) const {
  if (!start_) {
    return std::nullopt;
  }
  return std::chrono::duration_cast<milliseconds>(moment - *start_).count();
}

}  // namespace brisolte
