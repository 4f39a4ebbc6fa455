#include "encoder/ffmpeg/encoded_sound.h"

#include <gtest/gtest.h>

#include <utility>

namespace brisolte {
namespace {

constexpr SoundOptions kMp3{};
constexpr SoundOptions kAac{SoundCodec::kAac};
constexpr SoundOptions kOpus{SoundCodec::kOpus};

AudioInput Input(int channels, int sampleRate) {
  AudioInput input;
  input.channels = channels;
  input.sampleRate = sampleRate;
  return input;
}

TEST(EncodedSound, IsMp3UnlessAskedFor) {
  const EncodedSound sound = ChooseEncodedSound(Input(2, 44'100), {});
  EXPECT_STREQ(sound.codecName, "MP3");
  EXPECT_STREQ(sound.encoderName, "libmp3lame");
  EXPECT_EQ(sound.bitRate, 128'000);
  EXPECT_EQ(ChooseEncodedSound(Input(1, 8'000), {}).bitRate, 128'000);
}

TEST(EncodedSound, IsMixedDownToTwoChannels) {
  for (const SoundOptions& options : {kMp3, kAac, kOpus}) {
    for (int channels = 1; channels <= 8; ++channels) {
      EXPECT_EQ(ChooseEncodedSound(Input(channels, 48'000), options).channels, channels == 1 ? 1 : 2);
    }
  }
}

TEST(EncodedSound, HasTheRateOfItsCodecThatKeepsMostOfTheSound) {
  for (const SoundOptions& options : {kMp3, kAac}) {
    for (const auto& [rate, encoded] : {std::pair{48'000, 48'000},
                                        {44'100, 44'100},
                                        {8'000, 8'000},
                                        {88'200, 44'100},
                                        {176'400, 44'100},
                                        {96'000, 48'000},
                                        {192'000, 48'000},
                                        {64'000, 48'000},
                                        {768'000, 48'000},
                                        {37'800, 44'100},
                                        {7'999, 8'000},
                                        {1'000, 8'000}}) {
      EXPECT_EQ(ChooseEncodedSound(Input(2, rate), options).sampleRate, encoded) << rate;
    }
  }
}

TEST(EncodedSound, HasOneRateInOpus) {
  for (const int rate : {1'000, 8'000, 16'000, 44'100, 48'000, 88'200, 96'000, 768'000}) {
    EXPECT_EQ(ChooseEncodedSound(Input(2, rate), kOpus).sampleRate, 48'000) << rate;
  }
}

TEST(EncodedSound, KeepsARateThatNoDeviceHas) {
  for (const SoundOptions& options : {kMp3, kAac, kOpus}) {
    for (const int rate : {1, 999, 768'001, 0x7FFFFFFF}) {
      EXPECT_EQ(ChooseEncodedSound(Input(2, rate), options).sampleRate, rate);
    }
  }
}

TEST(EncodedSound, HasTheSameBitRateForEachChannel) {
  for (const SoundOptions& options : {kAac, kOpus}) {
    EXPECT_EQ(ChooseEncodedSound(Input(1, 48'000), options).bitRate, 80'000);
    EXPECT_EQ(ChooseEncodedSound(Input(2, 48'000), options).bitRate, 160'000);
    EXPECT_EQ(ChooseEncodedSound(Input(6, 48'000), options).bitRate, 160'000);
  }
}

TEST(EncodedSound, HasTheBitRateThatIsWantedWhereItsCodecHasIt) {
  const auto bitRate = [](SoundCodec codec, std::int32_t wanted, int channels = 2, int rate = 48'000) {
    return ChooseEncodedSound(Input(channels, rate), {codec, wanted}).bitRate;
  };
  for (const SoundCodec codec : {SoundCodec::kMp3, SoundCodec::kAac, SoundCodec::kOpus}) {
    EXPECT_EQ(bitRate(codec, 96'000), 96'000);
  }
  EXPECT_EQ(bitRate(SoundCodec::kMp3, 1), 8'000);
  EXPECT_EQ(bitRate(SoundCodec::kMp3, 10'000'000), 320'000);
  EXPECT_EQ(bitRate(SoundCodec::kAac, 1), 16'000);
  EXPECT_EQ(bitRate(SoundCodec::kAac, 10'000'000), 576'000);
  EXPECT_EQ(bitRate(SoundCodec::kAac, 10'000'000, 1, 8'000), 48'000);
  EXPECT_EQ(bitRate(SoundCodec::kAac, 0, 1, 8'000), 48'000);
  EXPECT_EQ(bitRate(SoundCodec::kOpus, 1), 12'000);
  EXPECT_EQ(bitRate(SoundCodec::kOpus, 10'000'000), 512'000);
}

// Whatever a device says of itself.
TEST(EncodedSound, HasABitRateAlsoForWhatNoEncoderTakes) {
  for (const SoundOptions& options : {kMp3, kAac, kOpus}) {
    for (const int channels : {0, 9, 0xFFFF}) {
      for (const int rate : {0, 1, 0x7FFFFFFF}) {
        EXPECT_GE(ChooseEncodedSound(Input(channels, rate), options).bitRate, 0);
      }
    }
  }
}

}  // namespace
}  // namespace brisolte
