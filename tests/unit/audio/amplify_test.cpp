#include "audio/amplify.h"

#include <gmock/gmock.h>

#include <cstring>
#include <limits>
#include <vector>

#include "audio/sound_control.h"

namespace brisolte {
namespace {

using ::testing::ElementsAre;

WaveFormat Format(std::uint16_t bits, bool floatingPoint = false, std::uint16_t channels = 1) {
  WaveFormat format;
  format.channels = channels;
  format.bitsPerSample = bits;
  format.blockAlign = static_cast<std::uint16_t>(bits / 8 * channels);
  format.floatingPoint = floatingPoint;
  return format;
}

template <typename Sample>
std::vector<Sample> Amplified(const WaveFormat& format, std::vector<Sample> samples, float from, float to) {
  Amplify(format, {reinterpret_cast<std::uint8_t*>(samples.data()), samples.size() * sizeof(Sample)}, from,
          to);
  return samples;
}

TEST(Amplify, MultipliesSamplesOfEachKind) {
  EXPECT_THAT(Amplified<std::uint8_t>(Format(8), {128, 148, 108}, 2, 2), ElementsAre(128, 168, 88));
  EXPECT_THAT(Amplified<std::int16_t>(Format(16), {1000, -1000, 7}, 0.5, 0.5), ElementsAre(500, -500, 4));
  EXPECT_THAT(Amplified<std::uint8_t>(Format(24), {0, 0, 0x10, 0, 0, 0xF0}, 2, 2),
              ElementsAre(0, 0, 0x20, 0, 0, 0xE0));
  EXPECT_THAT(Amplified<std::int32_t>(Format(32), {1'000'000, -3}, 3, 3), ElementsAre(3'000'000, -9));
  EXPECT_THAT(Amplified<float>(Format(32, true), {0.5F, -0.25F}, 4, 4), ElementsAre(2.0F, -1.0F));
}

TEST(Amplify, KeepsWholeNumbersInTheirRange) {
  EXPECT_THAT(Amplified<std::uint8_t>(Format(8), {255, 0}, 4, 4), ElementsAre(255, 0));
  EXPECT_THAT(Amplified<std::int16_t>(Format(16), {32767, -32768}, 4, 4), ElementsAre(32767, -32768));
  EXPECT_THAT(Amplified<std::uint8_t>(Format(24), {0xFF, 0xFF, 0x7F, 0, 0, 0x80}, 4, 4),
              ElementsAre(0xFF, 0xFF, 0x7F, 0, 0, 0x80));
  constexpr auto kMost = std::numeric_limits<std::int32_t>::max();
  constexpr auto kLeast = std::numeric_limits<std::int32_t>::min();
  EXPECT_THAT(Amplified<std::int32_t>(Format(32), {kMost, kLeast}, 4, 4), ElementsAre(kMost, kLeast));
}

TEST(Amplify, LeavesEverythingAsItIsAtTheVolumeOne) {
  const std::vector<float> strange{0.1F, 7.5F, std::numeric_limits<float>::infinity()};
  EXPECT_EQ(Amplified<float>(Format(32, true), strange, 1, 1), strange);
  EXPECT_THAT(Amplified<std::uint8_t>(Format(64, true), {1, 2, 3, 4, 5, 6, 7, 8}, 0, 0),
              ElementsAre(1, 2, 3, 4, 5, 6, 7, 8))
      << "of a kind that is not known";
}

TEST(Amplify, ChangesTheVolumeEvenlyOverAllChannelsAlike) {
  EXPECT_THAT(Amplified<std::int16_t>(Format(16, false, 2),
                                      {1000, -1000, 1000, -1000, 1000, -1000, 1000, -1000}, 1, 0),
              ElementsAre(750, -750, 500, -500, 250, -250, 0, 0));
  EXPECT_THAT(Amplified<std::int16_t>(Format(16), {1000, 1000}, 0, 1), ElementsAre(500, 1000));
}

TEST(Amplify, TellsTheLoudestSample) {
  std::vector<std::int16_t> samples{100, -16384, 8192};
  const std::span<std::uint8_t> bytes(reinterpret_cast<std::uint8_t*>(samples.data()), 6);
  EXPECT_EQ(Amplify(Format(16), bytes, 1, 1), 0.5F);
  EXPECT_EQ(Amplify(Format(16), bytes, 0.5, 0.5), 0.25F);
  EXPECT_EQ(Amplify(Format(16), {}, 1, 1), 0);
  std::vector<float> broken{std::numeric_limits<float>::quiet_NaN(), 0.25F};
  EXPECT_EQ(Amplify(Format(32, true), {reinterpret_cast<std::uint8_t*>(broken.data()), 8}, 1, 1), 0.25F);
}

TEST(Amplify, LeavesWhatIsNoWholeSample) {
  EXPECT_THAT(Amplified<std::uint8_t>(Format(16), {0, 1, 9}, 0, 0), ElementsAre(0, 0, 9));
}

TEST(SoundControl, GivesItsVolumeUnlessMuted) {
  SoundControl control;
  EXPECT_EQ(control.factor(), 1);
  control.SetVolume(0.5);
  control.Mute(true);
  EXPECT_EQ(control.factor(), 0);
  control.Mute(false);
  EXPECT_EQ(control.factor(), 0.5F);
}

TEST(SoundControl, TellsTheLoudestSinceItWasAsked) {
  SoundControl control;
  control.Heard(0.25);
  control.Heard(0.5);
  control.Heard(0.125);
  EXPECT_EQ(control.TakeLevel(), 0.5F);
  EXPECT_EQ(control.TakeLevel(), 0);
  control.Heard(3);
  EXPECT_EQ(control.TakeLevel(), 1) << "there is nothing louder in a file";
}

}  // namespace
}  // namespace brisolte
