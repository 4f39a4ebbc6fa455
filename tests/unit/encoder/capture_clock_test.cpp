#include "encoder/capture_clock.h"

#include <gtest/gtest.h>

#include <limits>

namespace brisolte {
namespace {

constexpr CaptureClock::Moment At(std::int64_t milliseconds) {
  return CaptureClock::Moment() + std::chrono::hours(1) + std::chrono::milliseconds(milliseconds);
}

VideoFrame Captured(std::int64_t milliseconds, std::int64_t delay = 0) {
  VideoFrame frame;
  frame.timestamp = milliseconds;
  frame.delay = delay;
  return frame;
}

TEST(CaptureClock, KnowsNoTimeBeforeTheFirstFrame) {
  EXPECT_EQ(CaptureClock().TimeAt(At(0)), std::nullopt);
}

TEST(CaptureClock, GoesOnAfterTheLastFrame) {
  CaptureClock clock;
  clock.FrameArrived(Captured(0), At(5));
  EXPECT_EQ(clock.TimeAt(At(5)), 0);
  EXPECT_EQ(clock.TimeAt(At(1005)), 1000);
  clock.FrameArrived(Captured(2000), At(2005));
  EXPECT_EQ(clock.TimeAt(At(600'005)), 600'000);
}

TEST(CaptureClock, AllowsForTheDelayOfAFrame) {
  CaptureClock clock;
  clock.FrameArrived(Captured(0, 250), At(300));
  EXPECT_EQ(clock.TimeAt(At(3050)), 3000);
}

TEST(CaptureClock, BelievesTheFrameThatCameWithTheLeastDelay) {
  CaptureClock clock;
  clock.FrameArrived(Captured(0), At(80));
  clock.FrameArrived(Captured(100), At(103));
  clock.FrameArrived(Captured(200), At(290));
  EXPECT_EQ(clock.TimeAt(At(300)), 297);
}

TEST(CaptureClock, DoesNotTakeTimesThatNoRecordingReaches) {
  CaptureClock clock;
  clock.FrameArrived(Captured(std::numeric_limits<std::int64_t>::max()), At(0));
  clock.FrameArrived(Captured(std::numeric_limits<std::int64_t>::min()), At(0));
  clock.FrameArrived(Captured(-1), At(0));
  clock.FrameArrived(Captured(0, std::numeric_limits<std::int64_t>::max()), At(0));
  EXPECT_EQ(clock.TimeAt(At(10)), std::nullopt);
}

}  // namespace
}  // namespace brisolte
