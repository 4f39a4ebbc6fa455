#include "video/frame_pacer.h"

#include <gmock/gmock.h>

#include <vector>

namespace brisolte {
namespace {

using ::testing::ElementsAre;

/// The times out of `times` at which frames are accepted.
std::vector<std::int64_t> Accepted(std::int32_t frameRate, const std::vector<std::int64_t>& times) {
  FramePacer pacer(frameRate);
  std::vector<std::int64_t> accepted;
  for (const std::int64_t now : times) {
    if (pacer.Arrive(now).accepted) {
      accepted.push_back(now);
    }
  }
  return accepted;
}

TEST(FramePacer, TakesEveryFrameOfASourceOfTheSameRate) {
  EXPECT_THAT(Accepted(60, {1000, 1016, 1032, 1048}), ElementsAre(1000, 1016, 1032, 1048));
}

TEST(FramePacer, TakesEveryOtherFrameOfASourceOfTwiceTheRate) {
  EXPECT_THAT(Accepted(60, {1000, 1008, 1016, 1024, 1032}), ElementsAre(1000, 1016, 1032));
}

TEST(FramePacer, TakesAFrameUpToAFifthOfAnIntervalEarly) {
  // 33 ms x 0.8 is 26.4 ms, cut to 26.
  EXPECT_THAT(Accepted(30, {1000, 1025, 1026}), ElementsAre(1000, 1026));
  EXPECT_THAT(Accepted(1, {1000, 1799, 1800}), ElementsAre(1000, 1800));
}

TEST(FramePacer, CountsEarlinessFromTheFrameTakenAndNotFromTheOneDue) {
  EXPECT_THAT(Accepted(30, {1000, 1026, 1052, 1078}), ElementsAre(1000, 1026, 1052, 1078));
}

TEST(FramePacer, TakesEverythingBeyondAThousandFramesASecond) {
  EXPECT_THAT(Accepted(1000, {1000, 1000, 1001}), ElementsAre(1000, 1000, 1001));
  EXPECT_THAT(Accepted(2'000'000'000, {1000, 1000}), ElementsAre(1000, 1000));
}

TEST(FramePacer, DoesNotThinOutWithoutAFrameRate) {
  EXPECT_THAT(Accepted(0, {1000, 1000}), ElementsAre(1000, 1000));
  EXPECT_THAT(Accepted(-5, {1000, 1000}), ElementsAre(1000, 1000));
}

TEST(FramePacer, DropsAFrameFromBeforeTheFirst) {
  EXPECT_THAT(Accepted(30, {1000, 900, 1050}), ElementsAre(1000, 1050));
}

TEST(FramePacer, TimesFramesFromTheFirstAndFromTheOneAccepted) {
  FramePacer pacer(30);
  const auto first = pacer.Arrive(5000);
  EXPECT_TRUE(first.isFirst);
  EXPECT_EQ(first.accepted->sinceStart, 0);
  EXPECT_EQ(first.accepted->sinceLast, 0);
  EXPECT_FALSE(pacer.Arrive(5010).accepted);
  const auto later = pacer.Arrive(5040);
  EXPECT_FALSE(later.isFirst);
  EXPECT_EQ(later.accepted->sinceStart, 40);
  EXPECT_EQ(later.accepted->sinceLast, 40);
  const auto last = pacer.Arrive(5100);
  EXPECT_EQ(last.accepted->sinceStart, 100);
  EXPECT_EQ(last.accepted->sinceLast, 60);
}

TEST(FramePacer, TakesTheFrameAfterOneOfTimeZeroForTheFirstAgain) {
  FramePacer pacer(30);
  EXPECT_TRUE(pacer.Arrive(0).isFirst);
  EXPECT_TRUE(pacer.Arrive(10).isFirst);
  EXPECT_FALSE(pacer.Arrive(60).isFirst);
}

TEST(FramePacer, TakesAFrameThatIsDueWheneverItComes) {
  FramePacer pacer(30);
  EXPECT_TRUE(pacer.ArriveDue(5000).isFirst);
  EXPECT_EQ(pacer.ArriveDue(5010).accepted->sinceStart, 10);
  EXPECT_FALSE(pacer.Arrive(5030).accepted) << "the pace goes on from there";
  EXPECT_EQ(pacer.Arrive(5040).accepted->sinceLast, 30);
  EXPECT_EQ(pacer.ArriveDue(4000).accepted->sinceLast, 1) << "never before the one before";
}

TEST(FramePacer, HoldsForTheLargestTimesOfAClock) {
  constexpr std::int64_t kLast = 922'337'203'685'477;  // the largest number of 100 ns units, in milliseconds
  EXPECT_THAT(Accepted(30, {kLast - 60, kLast - 50, kLast}), ElementsAre(kLast - 60, kLast));
}

}  // namespace
}  // namespace brisolte
