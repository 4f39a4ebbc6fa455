#pragma once

#include <cstdint>
#include <optional>

namespace brisolte {

/// When an accepted frame lies in its recording.
struct FrameTiming {
  std::int64_t sinceStart = 0;  ///< milliseconds since the first frame
  std::int64_t sinceLast = 0;   ///< milliseconds since the accepted frame before
};

/// What becomes of a frame that arrived.
struct Arrival {
  bool isFirst = false;
  std::optional<FrameTiming> accepted;  ///< empty: the frame is dropped
};

/// Thins a source's frames out to a frame rate. Frames are dropped, never repeated. Not for several threads
/// at once.
class FramePacer {
 public:
  /// `frameRate` is in frames per second; without one greater than 0 nothing is thinned out.
  explicit FramePacer(std::int32_t frameRate);

  /// Takes the capture time of a frame, in milliseconds of any clock that does not reach the ends of its
  /// range. The time 0 counts as no frame yet, so the frame after one of that time is the first again.
  Arrival Arrive(std::int64_t nowMs);

  /// The same for a frame that is due whenever it comes, after the one before it.
  Arrival ArriveDue(std::int64_t nowMs);

 private:
  std::int64_t intervalMs_;
  std::int64_t firstFrameTimeMs_ = 0;
  std::int64_t nextDueTimeMs_ = 0;
  std::int64_t lastFrameTimeMs_ = 0;
};

}  // namespace brisolte
