#pragma once

#include <cstdint>

#include "encoder/ffmpeg/ffmpeg.h"

namespace brisolte {

/// Gives the frames of one recording presentation times that strictly rise.
class VideoTimestamps {
 public:
  /// The time of the next frame, in units of `timeBase`: that of its capture, or one tick after the frame
  /// before when that is not later. Times that no recording reaches count as not later.
  std::int64_t Next(std::int64_t captureMilliseconds, AVRational timeBase);

 private:
  std::int64_t lastPts_ = -1;
};

}  // namespace brisolte
