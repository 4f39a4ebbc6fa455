#include "encoder/ffmpeg/audio_timestamps.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace brisolte {
namespace {

TEST(AudioTimestamps, AreThoseOfTheFirstSample) {
  AudioTimestamps times;
  times.Add(1000, 1024);
  times.Add(2048, 1024);
  times.Add(9000, 1024);
  EXPECT_EQ(times.Take(1152), 1000);
  EXPECT_EQ(times.Take(1152), 2048 + 128);
  EXPECT_EQ(times.Take(768), 9000 + 256);
}

TEST(AudioTimestamps, CoverSeveralPieces) {
  AudioTimestamps times;
  for (std::int64_t i = 0; i < 10; ++i) {
    times.Add(100 * i, 100);
  }
  EXPECT_EQ(times.Take(250), 0);
  EXPECT_EQ(times.Take(50), 250);
  EXPECT_EQ(times.Take(600), 300);
  EXPECT_EQ(times.Take(100), 900);
}

TEST(AudioTimestamps, RiseByTheLeastStepUntilTheClockHasCaughtUp) {
  AudioTimestamps times(8);
  for (const std::int64_t time : {0, 500, 500, 501, 520, 530}) {
    times.Add(time, 10);
  }
  for (const std::int64_t expected : {0, 500, 508, 516, 524, 532}) {
    EXPECT_EQ(times.Take(10), expected);
  }
}

TEST(AudioTimestamps, RiseByOneTickWhereTheClockDoesNot) {
  AudioTimestamps times;
  for (const std::int64_t time : {500, 500, 500, 400, 501, 502, 2000}) {
    times.Add(time, 10);
  }
  for (const std::int64_t expected : {500, 501, 502, 503, 504, 505, 2000}) {
    EXPECT_EQ(times.Take(10), expected);
  }
}

TEST(AudioTimestamps, IgnorePiecesWithoutSamples) {
  AudioTimestamps times;
  times.Add(5, 0);
  times.Add(7, 3);
  times.Add(8, -1);
  EXPECT_EQ(times.Take(3), 7);
}

TEST(AudioTimestamps, StayRisingWithoutSamples) {
  AudioTimestamps times;
  times.Add(70, 3);
  EXPECT_EQ(times.Take(3), 70);
  EXPECT_EQ(times.Take(3), 70);
  times.Add(10, 3);
  EXPECT_EQ(times.Take(3), 71);
}

}  // namespace
}  // namespace brisolte
