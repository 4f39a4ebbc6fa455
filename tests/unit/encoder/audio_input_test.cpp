#include "encoder/ffmpeg/audio_input.h"

#include <gtest/gtest.h>

#include "support/tones.h"

namespace brisolte {
namespace {

using testing::DeviceFormat;

TEST(AudioInput, DescribesWhatADeviceDelivers) {
  const WaveFormat format = DeviceFormat(SampleType::kSigned24Packed, 6, 96'000, true);
  const auto input = DescribeAudioInput(&format, {});
  ASSERT_TRUE(input);
  EXPECT_EQ(input->sampleType, SampleType::kSigned24Packed);
  EXPECT_EQ(input->bitsPerSample, 24);
  EXPECT_EQ(input->channels, 6);
  EXPECT_EQ(input->sampleRate, 96'000);
  EXPECT_EQ(input->blockBytes, 18U);
}

TEST(AudioInput, IsTheSettingsWithoutAFormat) {
  const auto input = DescribeAudioInput(nullptr, {});
  ASSERT_TRUE(input);
  EXPECT_EQ(input->sampleType, SampleType::kFloat32);
  EXPECT_EQ(input->bitsPerSample, 32);
  EXPECT_EQ(input->channels, 2);
  EXPECT_EQ(input->sampleRate, 44'100);
  EXPECT_EQ(input->blockBytes, 8U);
}

TEST(AudioInput, RefusesSettingsThatDescribeNoSound) {
  CaptureSettings settings;
  settings.audioChannels = 0;
  EXPECT_FALSE(DescribeAudioInput(nullptr, settings));
  settings.audioChannels = 2;
  settings.audioSampleRate = -44'100;
  EXPECT_FALSE(DescribeAudioInput(nullptr, settings));
}

TEST(AudioInput, RefusesFormatsThatContradictThemselves) {
  const WaveFormat good = DeviceFormat(SampleType::kSigned16, 2, 48'000);
  ASSERT_TRUE(DescribeAudioInput(&good, {}));
  const auto refuses = [&good](auto change) {
    WaveFormat format = good;
    change(format);
    return !DescribeAudioInput(&format, {});
  };
  EXPECT_TRUE(refuses([](WaveFormat& format) { format = WaveFormat(); }));
  EXPECT_TRUE(refuses([](WaveFormat& format) { format.channels = 0; }));
  EXPECT_TRUE(refuses([](WaveFormat& format) { format.sampleRate = 0; }));
  EXPECT_TRUE(refuses([](WaveFormat& format) { format.sampleRate = 0x80000000U; }));
  EXPECT_TRUE(refuses([](WaveFormat& format) { format.bitsPerSample = 12; }));
  EXPECT_TRUE(refuses([](WaveFormat& format) { format.bitsPerSample = 0; }));
  EXPECT_TRUE(refuses([](WaveFormat& format) { format.blockAlign = 6; }));
  EXPECT_TRUE(refuses([](WaveFormat& format) { format.blockAlign = 0; }));
  EXPECT_TRUE(refuses([](WaveFormat& format) { format.floatingPoint = true; }));
  EXPECT_TRUE(refuses([](WaveFormat& format) { format.formatTag = 0x55; }));
}

}  // namespace
}  // namespace brisolte
