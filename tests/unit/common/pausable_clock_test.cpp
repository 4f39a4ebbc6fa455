#include "common/pausable_clock.h"

#include <gtest/gtest.h>

#include "support/hand_clock.h"

namespace brisolte {
namespace {

using namespace std::chrono_literals;

class PausableClockTest : public ::testing::Test {
 protected:
  /// What the clock shows when the steady one shows this, since the beginning.
  PausableClock::Duration At(std::int64_t milliseconds) {
    steady_.Set(milliseconds);
    return clock_.Now() - begin_;
  }

  testing::HandClock steady_;
  PausableClock clock_{steady_.now()};
  const PausableClock::Moment begin_ = clock_.Now();
};

TEST_F(PausableClockTest, GoesWithTheSteadyClock) {
  EXPECT_EQ(At(0), 0ms);
  EXPECT_EQ(At(1234), 1234ms);
  EXPECT_FALSE(clock_.paused());
  EXPECT_EQ(clock_.behind(), 0ms);
}

TEST_F(PausableClockTest, StandsStillWhilePaused) {
  At(1000);
  EXPECT_TRUE(clock_.Pause());
  EXPECT_TRUE(clock_.paused());
  EXPECT_EQ(At(5000), 1000ms);
  EXPECT_FALSE(clock_.Pause());
  EXPECT_EQ(At(6000), 1000ms) << "it is paused once";
}

TEST_F(PausableClockTest, GoesOnFromWhereItStood) {
  for (int pause = 1; pause <= 3; ++pause) {
    At(pause * 10'000);
    EXPECT_TRUE(clock_.Pause());
    At(pause * 10'000 + 4000);
    EXPECT_TRUE(clock_.Resume());
    EXPECT_FALSE(clock_.Resume());
    EXPECT_EQ(clock_.behind(), pause * 4000ms);
    EXPECT_EQ(At(pause * 10'000 + 5000), pause * 6000ms + 5000ms);
  }
}

}  // namespace
}  // namespace brisolte
