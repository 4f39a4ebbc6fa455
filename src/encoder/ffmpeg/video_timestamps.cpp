#include "encoder/ffmpeg/video_timestamps.h"

namespace brisolte {

std::int64_t VideoTimestamps::Next(std::int64_t captureMilliseconds, AVRational timeBase) {
  // Leaves room for more single ticks than there can be frames.
  constexpr std::int64_t kLatest = std::int64_t{1} << 62;
  std::int64_t pts = av_rescale_q(captureMilliseconds, {1, 1000}, timeBase);
  if (pts <= lastPts_ || pts > kLatest) {
    pts = lastPts_ + 1;
  }
  lastPts_ = pts;
  return pts;
}

}  // namespace brisolte
