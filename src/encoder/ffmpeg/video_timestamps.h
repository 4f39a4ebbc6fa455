#pragma once

#include <cstdint>
#include <optional>

#include "encoder/ffmpeg/ffmpeg.h"

namespace brisolte {

/// Gives the pictures of one recording presentation times that strictly rise, in units of a time base.
class VideoTimestamps {
 public:
  /// The time of the next picture: that of its capture, or one tick after the picture before when that is not
  /// later. Times that no recording reaches count as not later. None when the picture is to be left out:
  /// where ticks are longer than the milliseconds that captures are told in, it would begin more than one
  /// tick after its capture.
  std::optional<std::int64_t> Next(std::int64_t captureMilliseconds, AVRational timeBase);

  /// The time at which the picture before is to be handed in again, ahead of one captured then, because
  /// the pause between the two is too long for files. To be called until there is none.
  std::optional<std::int64_t> NextInPause(std::int64_t captureMilliseconds, AVRational timeBase);

  /// The time at which the picture before is to be handed in again, for so many ticks, to be shown until the
  /// end. None when it needs not: after a picture less than `duration` before the end, and without any.
  std::optional<std::int64_t> Last(std::int64_t endMilliseconds, std::int64_t duration, AVRational timeBase);

 private:
  std::int64_t lastPts_ = -1;
};

}  // namespace brisolte
