#include "encoder/mf/sample_times.h"

#include <gtest/gtest.h>

namespace brisolte {
namespace {

constexpr std::int64_t kDay = 86'400;

TEST(SampleTime, IsTheMillisecondsInUnitsOf100Nanoseconds) {
  EXPECT_EQ(SampleTime(0), 0);
  EXPECT_EQ(SampleTime(1), 10'000);
  EXPECT_EQ(SampleTime(33), 330'000);
  EXPECT_EQ(SampleTime(7 * kDay * 1000 + 1), 6'048'000'010'000);
}

TEST(AudioSampleTime, IsExactForAWholeChunk) {
  EXPECT_EQ(AudioSampleTime(0, 48'000), 0);
  EXPECT_EQ(AudioSampleTime(1920, 48'000), 400'000);
  EXPECT_EQ(AudioSampleTime(1760, 44'100), 399'092);  // 44.1 kHz: 39.9 ms, because the byte rate is cut
}

TEST(AudioSampleTime, IsCutToAWholeUnit) {
  EXPECT_EQ(AudioSampleTime(1, 44'100), 226);  // 226.757...
  EXPECT_EQ(AudioSampleTime(1, 48'000), 208);  // 208.333...
  EXPECT_EQ(AudioSampleTime(44'099, 44'100), 9'999'773);
  EXPECT_EQ(AudioSampleTime(44'100, 44'100), 10'000'000);
}

TEST(AudioSampleTime, FollowsEveryChunkOfADayToTheLastUnit) {
  for (const std::uint32_t rate : {8'000U, 11'025U, 44'100U, 48'000U, 192'000U}) {
    const std::int64_t chunk = rate / 25;
    for (std::int64_t frames = 0; frames <= kDay * rate; frames += chunk * 997) {
      ASSERT_EQ(AudioSampleTime(frames, rate), frames * 10'000'000 / rate) << frames << " at " << rate;
    }
    EXPECT_EQ(AudioSampleTime(kDay * rate, rate), kDay * 10'000'000);
  }
}

TEST(AudioSampleTime, DoesNotOverflowWhereTheProductWould) {
  // Five years at the highest rate of devices: the frames times the units of a second exceed 64 bits.
  constexpr std::int64_t kSeconds = kDay * 5 * 365;
  EXPECT_EQ(AudioSampleTime(kSeconds * 384'000 + 1, 384'000), kSeconds * 10'000'000 + 26);
}

TEST(AudioChunkBytes, AreThoseOf40MillisecondsOfTheCutByteRate) {
  EXPECT_EQ(AudioChunkBytes(384'000), 15'360U);  // 48 kHz, stereo, float
  EXPECT_EQ(AudioChunkBytes(192'000), 7'680U);   // 48 kHz, stereo, 16 bits
  EXPECT_EQ(AudioChunkBytes(352'800), 14'080U);  // 44.1 kHz, stereo, float: 352 * 40
  EXPECT_EQ(AudioChunkBytes(22'050), 880U);
  EXPECT_EQ(AudioChunkBytes(1'000), 40U);
  EXPECT_EQ(AudioChunkBytes(999), 0U);
  EXPECT_EQ(AudioChunkBytes(0), 0U);
  EXPECT_EQ(AudioChunkBytes(0xFFFFFFFF), 171'798'680U);
}

TEST(Nv12Bytes, AreOneAndAHalfAPixel) {
  EXPECT_EQ(Nv12Bytes(2, 2), 6U);
  EXPECT_EQ(Nv12Bytes(1280, 720), 1'382'400U);
  EXPECT_EQ(Nv12Bytes(3840, 2160), 12'441'600U);
}

}  // namespace
}  // namespace brisolte
