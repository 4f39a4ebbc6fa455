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

TEST(VideoTimestamps, RiseWhateverTheCaptureTimesAre) {
  constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
  constexpr auto kLeast = std::numeric_limits<std::int64_t>::min();
  for (const AVRational timeBase : {kTimeBase, AVRational{1, 30}, AVRational{1, 1000}}) {
    VideoTimestamps timestamps;
    std::int64_t last = -1;
    for (const std::int64_t time :
         {std::int64_t{5}, kMost, kMost - 1, kMost / 2, kMost / 60, kLeast, kLeast + 1, kMost}) {
      const std::int64_t next = timestamps.Next(time, timeBase);
      EXPECT_GT(next, last);
      last = next;
    }
  }
}

}  // namespace
}  // namespace brisolte
