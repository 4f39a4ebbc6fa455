#include "audio/precise_wait.h"

#include <gtest/gtest.h>

#include <utility>

namespace brisolte {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// How long a wait takes.
steady_clock::duration Wait(const PreciseWait& wait, milliseconds time) {
  const auto start = steady_clock::now();
  wait.For(time);
  return steady_clock::now() - start;
}

TEST(PreciseWait, LastsAsLongAsAsked) {
  Handle timer = MakeHighResolutionTimer();
  ASSERT_TRUE(timer != nullptr);
  const PreciseWait wait(std::move(timer));
  for (const milliseconds time : {milliseconds(1), milliseconds(10), milliseconds(50)}) {
    // The timer's clock and this one are not the same.
    EXPECT_GE(Wait(wait, time) + milliseconds(1), time);
  }
}

TEST(PreciseWait, LastsAsLongAsAskedWhereTheSystemHasNoSuchTimer) {
  const PreciseWait wait{Handle()};
  EXPECT_GE(Wait(wait, milliseconds(10)) + milliseconds(1), milliseconds(10));
}

TEST(PreciseWait, CanBeOfNoTime) {
  const PreciseWait wait;
  Wait(wait, milliseconds(0));
}

}  // namespace
}  // namespace brisolte
