#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

#include "encoder/video_frame.h"

namespace brisolte {

/// Tells the moment; `std::chrono::steady_clock::now` outside of tests.
using SteadyNow = std::function<std::chrono::steady_clock::time_point()>;

/// Knows what time it is on a video capture's clock also when no frame comes to tell. Not synchronised: one
/// thread at a time.
class CaptureClock {
 public:
  using Moment = std::chrono::steady_clock::time_point;

  /// A frame arrived. Times that no recording reaches are not taken.
  void FrameArrived(const VideoFrame& frame, Moment arrival);

  /// The capture time of a frame that would be captured at this moment. None before the first frame.
  std::optional<std::int64_t> TimeAt(Moment moment) const;

 private:
  std::optional<Moment> start_;  ///< when the capture time was 0
};

}  // namespace brisolte
