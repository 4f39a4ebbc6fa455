#include "encoder/ffmpeg/video_timestamps.h"

#include <gtest/gtest.h>

#include <limits>

namespace brisolte {
namespace {

constexpr AVRational kTimeBase{1, 60'000};

TEST(VideoTimestamps, AreTheCaptureTimes) {
  VideoTimestamps timestamps;
  EXPECT_EQ(timestamps.Next(0, kTimeBase), 0);
  EXPECT_EQ(timestamps.Next(33, kTimeBase), 1980);
  EXPECT_EQ(timestamps.Next(1000, kTimeBase), 60'000);
}

TEST(VideoTimestamps, RiseByOneWhenTheCaptureTimeDoesNot) {
  VideoTimestamps timestamps;
  EXPECT_EQ(timestamps.Next(100, kTimeBase), 6000);
  EXPECT_EQ(timestamps.Next(100, kTimeBase), 6001);
  EXPECT_EQ(timestamps.Next(40, kTimeBase), 6002);
  EXPECT_EQ(timestamps.Next(101, kTimeBase), 6060);
}

TEST(VideoTimestamps, StartAtZeroForTimesBeforeTheFirst) {
  VideoTimestamps timestamps;
  EXPECT_EQ(timestamps.Next(-1000, kTimeBase), 0);
}

TEST(VideoTimestamps, OfATickAFrameFollowEachOther) {
  VideoTimestamps timestamps;
  EXPECT_EQ(timestamps.Next(0, {1, 30}), 0);
  EXPECT_EQ(timestamps.Next(10, {1, 30}), 1);
  EXPECT_EQ(timestamps.Next(100, {1, 30}), 3);
}

TEST(VideoTimestamps, OfATickAFrameLeaveOutWhatWouldComeMoreThanATickLate) {
  VideoTimestamps timestamps;
  EXPECT_EQ(timestamps.Next(0, {1, 25}), 0);
  EXPECT_EQ(timestamps.Next(10, {1, 25}), 1);
  EXPECT_EQ(timestamps.Next(39, {1, 25}), std::nullopt);
  EXPECT_EQ(timestamps.Next(40, {1, 25}), 2) << "exactly a tick is not too late";
  EXPECT_EQ(timestamps.Next(60, {1, 25}), std::nullopt);
  EXPECT_EQ(timestamps.Next(61, {1, 25}), std::nullopt);
  EXPECT_EQ(timestamps.Next(120, {1, 25}), 3);
}

TEST(VideoTimestamps, OfATickAFrameNeverLeaveOutTheFirst) {
  VideoTimestamps timestamps;
  EXPECT_EQ(timestamps.Next(-1000, {1, 25}), 0);
}

TEST(VideoTimestamps, ShowTheLastPictureUntilTheEnd) {
  VideoTimestamps timestamps;
  EXPECT_EQ(timestamps.Next(0, kTimeBase), 0);
  EXPECT_EQ(timestamps.Last(3000, 2000, kTimeBase), 178'000);
  EXPECT_EQ(timestamps.Last(3000, 2000, kTimeBase), std::nullopt);
}

TEST(VideoTimestamps, ShowNothingAgainThatIsShownUntilTheEnd) {
  VideoTimestamps timestamps;
  EXPECT_EQ(timestamps.Last(3000, 2000, kTimeBase), std::nullopt) << "there is no picture";
  EXPECT_EQ(timestamps.Next(2970, kTimeBase), 178'200);
  EXPECT_EQ(timestamps.Last(3000, 2000, kTimeBase), std::nullopt);
  EXPECT_EQ(timestamps.Last(-3000, 2000, kTimeBase), std::nullopt);
}

TEST(VideoTimestamps, FillALongPauseEveryFiveMinutes) {
  constexpr std::int64_t kMinute = 60'000;
  for (const AVRational timeBase : {kTimeBase, AVRational{1, 30}}) {
    const std::int64_t ticks = std::int64_t{60} * timeBase.den;
    VideoTimestamps timestamps;
    EXPECT_EQ(timestamps.NextInPause(60 * kMinute, timeBase), std::nullopt) << "there is no picture";
    EXPECT_EQ(timestamps.Next(0, timeBase), 0);
    EXPECT_EQ(timestamps.NextInPause(5 * kMinute, timeBase), std::nullopt);
    EXPECT_EQ(timestamps.NextInPause(11 * kMinute, timeBase), 5 * ticks);
    EXPECT_EQ(timestamps.NextInPause(11 * kMinute, timeBase), 10 * ticks);
    EXPECT_EQ(timestamps.NextInPause(11 * kMinute, timeBase), std::nullopt);
    EXPECT_EQ(timestamps.Next(11 * kMinute, timeBase), 11 * ticks);
  }
}

TEST(VideoTimestamps, DoNotFillAPauseThatNoRecordingHas) {
  constexpr std::int64_t kDay = 86'400'000;
  for (const std::int64_t time : {8 * kDay, std::numeric_limits<std::int64_t>::max(),
                                  std::numeric_limits<std::int64_t>::min(), std::int64_t{-1}}) {
    VideoTimestamps timestamps;
    EXPECT_EQ(timestamps.Next(0, kTimeBase), 0);
    EXPECT_EQ(timestamps.NextInPause(time, kTimeBase), std::nullopt);
    EXPECT_EQ(timestamps.Last(time, 2000, kTimeBase), std::nullopt);
  }
}

TEST(VideoTimestamps, RiseWhateverTheCaptureTimesAre) {
  constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
  constexpr auto kLeast = std::numeric_limits<std::int64_t>::min();
  for (const AVRational timeBase : {kTimeBase, AVRational{1, 30}, AVRational{1, 1000}}) {
    VideoTimestamps timestamps;
    std::int64_t last = -1;
    for (const std::int64_t time :
         {std::int64_t{5}, kMost, kMost - 1, kMost / 2, kMost / 60, kLeast, kLeast + 1, kMost}) {
      if (const auto next = timestamps.Next(time, timeBase)) {
        EXPECT_GT(*next, last);
        last = *next;
      }
    }
  }
}

}  // namespace
}  // namespace brisolte
