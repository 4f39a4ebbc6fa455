#include "encoder/ffmpeg/video_timestamps.h"

#include <chrono>

namespace brisolte {
namespace {

constexpr AVRational kMilliseconds{1, 1000};

/// The AVI muxer refuses every picture that comes 60,000 ticks after the one before, which is 8 minutes at
/// 120 frames a second, and the MP4 muxer after 2^31 ticks, which is 10 hours.
constexpr std::chrono::milliseconds kLongestPause = std::chrono::minutes(5);

/// A pause beyond this is a clock's fault. Filling it could take without end.
constexpr std::chrono::milliseconds kLongestBelievablePause = std::chrono::days(7);

/// Leaves room for more single ticks than there can be frames.
constexpr std::int64_t kLatest = std::int64_t{1} << 62;

std::int64_t InTicks(std::int64_t milliseconds, AVRational timeBase) {
  return av_rescale_q(milliseconds, kMilliseconds, timeBase);
}

/// Whether the tick `pts` begins more than one tick after the capture, where a tick is longer than what
/// capture times are told in.
bool IsTooLate(std::int64_t pts, std::int64_t captureMilliseconds, AVRational timeBase) {
  return av_cmp_q(timeBase, kMilliseconds) > 0 &&
         av_compare_ts(pts - 1, timeBase, captureMilliseconds, kMilliseconds) > 0;
}

/// Whether a picture can be shown again at `pts`, after one at `last`.
bool IsLater(std::int64_t pts, std::int64_t last, AVRational timeBase) {
  return last >= 0 && pts > last && pts <= kLatest &&
         pts - last <= InTicks(kLongestBelievablePause.count(), timeBase);
}

}  // namespace

std::optional<std::int64_t> VideoTimestamps::Next(std::int64_t captureMilliseconds, AVRational timeBase) {
  std::int64_t pts = InTicks(captureMilliseconds, timeBase);
  if (pts <= lastPts_ || pts > kLatest) {
    pts = lastPts_ + 1;
    // With many frames for few ticks the delays would add up, and the recording play too slowly.
    if (lastPts_ >= 0 && IsTooLate(pts, captureMilliseconds, timeBase)) {
      return std::nullopt;
    }
  }
  lastPts_ = pts;
  return pts;
}

std::optional<std::int64_t> VideoTimestamps::NextInPause(std::int64_t captureMilliseconds,
                                                         AVRational timeBase) {
  const std::int64_t pts = InTicks(captureMilliseconds, timeBase);
  const std::int64_t longest = InTicks(kLongestPause.count(), timeBase);
  if (!IsLater(pts, lastPts_, timeBase) || pts - lastPts_ <= longest) {
    return std::nullopt;
  }
  lastPts_ += longest;
  return lastPts_;
}

std::optional<std::int64_t> VideoTimestamps::Last(std::int64_t endMilliseconds, std::int64_t duration,
                                                  AVRational timeBase) {
  const std::int64_t end = InTicks(endMilliseconds, timeBase);
  if (!IsLater(end, lastPts_, timeBase) || end - lastPts_ <= duration) {
    return std::nullopt;
  }
  lastPts_ = end - duration;
  return lastPts_;
}

}  // namespace brisolte
