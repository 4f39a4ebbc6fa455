#include "encoder/mf/media_attributes.h"

#include <gmock/gmock.h>

#include <string>

namespace brisolte {
namespace {

using ::testing::ElementsAre;

std::uint64_t Pair(std::uint64_t first, std::uint64_t second) {
  return first << 32 | second;
}

MATCHER_P3(Sets, key, value, failure, "") {
  return arg.key == key && arg.value == decltype(arg.value)(value) && arg.failure == std::string(failure);
}

CaptureSettings VideoSettings(const std::string& encoder) {
  CaptureSettings settings;
  settings.encoderName = encoder;
  settings.bitrate = 3'000'000;
  settings.frameRate = 25;
  return settings;
}

WaveFormat FormatWithTag(std::uint16_t tag, bool floatingPoint) {
  WaveFormat format;
  format.formatTag = tag;
  format.channels = 2;
  format.sampleRate = 48'000;
  format.averageBytesPerSecond = 384'000;
  format.blockAlign = 8;
  format.bitsPerSample = 32;
  format.floatingPoint = floatingPoint;
  return format;
}

TEST(MediaAttributes, DescribeTheH264InTheFile) {
  EXPECT_THAT(VideoOutputAttributes(VideoSettings("mf_h264"), 1280, 720),
              ElementsAre(Sets(MediaKey::kMajorType, MediaName::kVideo, "Failed to set major type: "),
                          Sets(MediaKey::kSubtype, MediaName::kH264, "Failed to set subtype: "),
                          Sets(MediaKey::kAverageBitrate, 3'000'000U, "Failed to set average bitrate: "),
                          Sets(MediaKey::kH264Profile, 66U, "Failed to set profile: "),
                          Sets(MediaKey::kH264Level, 40U, "Failed to set level: "),
                          Sets(MediaKey::kFrameRate, Pair(25, 1), "Failed to set frame rate: "),
                          Sets(MediaKey::kMaxKeyframeSpacing, 25U, "Failed to set max keyframe spacing: "),
                          Sets(MediaKey::kPixelAspectRatio, Pair(1, 1), "Failed to set pixel aspect ratio: "),
                          Sets(MediaKey::kFrameSize, Pair(1280, 720), "Failed to set frame size: "),
                          Sets(MediaKey::kInterlaceMode, 2U, "Failed to set interlace mode: ")));
}

TEST(MediaAttributes, DescribeTheHevcInTheFileWithKeysOfItsOwn) {
  const auto attributes = VideoOutputAttributes(VideoSettings("mf_hevc"), 2, 4);
  ASSERT_EQ(attributes.size(), 10U);
  EXPECT_THAT(attributes[1], Sets(MediaKey::kSubtype, MediaName::kHevc, "Failed to set subtype: "));
  EXPECT_THAT(attributes[3], Sets(MediaKey::kHevcProfile, 1U, "Failed to set profile: "));
  EXPECT_THAT(attributes[4], Sets(MediaKey::kHevcLevel, 40U, "Failed to set level: "));
  EXPECT_THAT(attributes[8], Sets(MediaKey::kFrameSize, Pair(2, 4), "Failed to set frame size: "));
}

TEST(MediaAttributes, NameNoEncoderForAnyOtherName) {
  EXPECT_EQ(VideoOutputAttributes(VideoSettings("MF_H264"), 2, 2).size(), 6U);
}

TEST(MediaAttributes, DescribeTheFramesHandedOver) {
  EXPECT_THAT(
      VideoInputAttributes(VideoSettings("mf_hevc"), 640, 480),
      ElementsAre(Sets(MediaKey::kMajorType, MediaName::kVideo, "Failed to set input major type: "),
                  Sets(MediaKey::kSubtype, MediaName::kNv12, "Failed to set input subtype: "),
                  Sets(MediaKey::kFrameSize, Pair(640, 480), "Failed to set input frame size: "),
                  Sets(MediaKey::kFrameRate, Pair(25, 1), "Failed to set input frame rate: "),
                  Sets(MediaKey::kPixelAspectRatio, Pair(1, 1), "Failed to set input pixel aspect ratio: ")));
}

TEST(MediaAttributes, NameTheSamplesByTheirTag) {
  EXPECT_EQ(AudioInputSubtype(FormatWithTag(WaveFormat::kIeeeFloatTag, true)), MediaName::kFloat);
  EXPECT_EQ(AudioInputSubtype(FormatWithTag(WaveFormat::kPcmTag, false)), MediaName::kPcm);
  EXPECT_EQ(AudioInputSubtype(FormatWithTag(WaveFormat::kExtensibleTag, true)), MediaName::kFloat);
  EXPECT_EQ(AudioInputSubtype(FormatWithTag(WaveFormat::kExtensibleTag, false)), MediaName::kPcm);
  EXPECT_EQ(AudioInputSubtype(FormatWithTag(2, false)), std::nullopt);
}

TEST(MediaAttributes, DescribeTheSamplesAsTheDeviceHasThem) {
  EXPECT_THAT(AudioInputAttributes(FormatWithTag(WaveFormat::kIeeeFloatTag, true), MediaName::kFloat),
              ElementsAre(Sets(MediaKey::kMajorType, MediaName::kAudio, "Failed to set major type: "),
                          Sets(MediaKey::kSubtype, MediaName::kFloat, "Failed to set subtype: "),
                          Sets(MediaKey::kAudioChannels, 2U, "Failed to set channels: "),
                          Sets(MediaKey::kAudioSampleRate, 48'000U, "Failed to set sample rate: "),
                          Sets(MediaKey::kAudioBitsPerSample, 32U, "Failed to set bits per sample: "),
                          Sets(MediaKey::kAudioBlockAlignment, 8U, "Failed to set block alignment: "),
                          Sets(MediaKey::kAudioBytesPerSecond, 384'000U,
                               "Failed to set average bytes per second: ")));
}

TEST(MediaAttributes, DescribeTheSoundInTheFile) {
  EXPECT_THAT(AudioOutputAttributes(WantedAacType(FormatWithTag(WaveFormat::kIeeeFloatTag, true), 128'007)),
              ElementsAre(Sets(MediaKey::kMajorType, MediaName::kAudio, "Failed to set output major type: "),
                          Sets(MediaKey::kSubtype, MediaName::kAac, "Failed to set output subtype: "),
                          Sets(MediaKey::kAudioChannels, 2U, "Failed to set output channels: "),
                          Sets(MediaKey::kAudioSampleRate, 48'000U, "Failed to set output sample rate: "),
                          Sets(MediaKey::kAudioBitsPerSample, 16U, "Failed to set output bits per sample: "),
                          Sets(MediaKey::kAudioBytesPerSecond, 16'000U, "Failed to set output bitrate: ")));
}

}  // namespace
}  // namespace brisolte
