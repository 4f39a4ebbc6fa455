#include "capture/codec_probe.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

const CodecDescription* Find(const std::vector<CodecDescription>& codecs, const std::string& name) {
  const auto found = std::ranges::find(codecs, name, &CodecDescription::name);
  return found != codecs.end() ? &*found : nullptr;
}

TEST(CodecLabel, IsTheLongNameIfThereIsOne) {
  EXPECT_EQ(CodecLabel("H.264", "h264"), "H.264");
  EXPECT_EQ(CodecLabel("", "h264"), "h264");
  EXPECT_EQ(CodecLabel(nullptr, "h264"), "h264");
}

TEST(CodecProbe, ListsSoftwareEncodersWithoutTryingThem) {
  const CapturedLog log;
  const auto codecs = GetSupportedVideoCodecs();
  const CodecDescription* const x264 = Find(codecs, "libx264");
  ASSERT_NE(x264, nullptr);
  EXPECT_EQ(x264->codecId, 27);
  EXPECT_THAT(x264->description, HasSubstr("H.264"));
  EXPECT_THAT(x264->pixelFormats, Contains("nv12"));
  EXPECT_EQ(x264->pixelFormats.front(), "yuv420p");
  EXPECT_FALSE(x264->isHardwareAccel);
  EXPECT_THAT(log.text(), Not(HasSubstr("Hardware codec libx264")));
  const CodecDescription* const mpeg4 = Find(codecs, "mpeg4");
  ASSERT_NE(mpeg4, nullptr);
  EXPECT_THAT(mpeg4->pixelFormats, ElementsAre("yuv420p"));
}

TEST(CodecProbe, ListsVideoEncodersOnly) {
  const CapturedLog log;
  const auto codecs = GetSupportedVideoCodecs();
  EXPECT_EQ(Find(codecs, "libmp3lame"), nullptr);
  EXPECT_EQ(Find(codecs, "h264"), nullptr);
}

TEST(CodecProbe, SaysWhatItFound) {
  const CapturedLog log;
  const auto codecs = GetSupportedVideoCodecs();
  EXPECT_EQ(log.lines().front(), "[INFO] Getting supported video codecs...");
  EXPECT_EQ(log.lines().back(), "[INFO] Found " + std::to_string(codecs.size()) + " supported video codecs");
}

// No machine that runs these tests has such a device.
TEST(CodecProbe, WarnsOfHardwareEncodersWithoutTheirDevice) {
  const CapturedLog log;
  const auto codecs = GetSupportedVideoCodecs();
  EXPECT_EQ(Find(codecs, "h264_nvenc"), nullptr);
  const auto lines = log.lines();
  EXPECT_EQ(
      std::ranges::count_if(lines,
                            [](const std::string& line) {
                              return line.starts_with("[WARNING] Hardware codec h264_nvenc not supported");
                            }),
      1);
}

#ifndef _WIN32  // the package's FFmpeg has no such encoder

TEST(CodecProbe, LeavesOutEncodersWithoutADeviceConfigurationInSilence) {
  const CapturedLog log;
  const auto codecs = GetSupportedVideoCodecs();
  const std::string name = "h264_v4l2m2m";
  EXPECT_EQ(Find(codecs, name), nullptr);
  EXPECT_THAT(log.text(), Not(HasSubstr(name)));
}

#endif

TEST(CodecProbe, GivesTheSameListAgain) {
  const CapturedLog log;
  const auto first = GetSupportedVideoCodecs();
  const auto second = GetSupportedVideoCodecs();
  ASSERT_EQ(first.size(), second.size());
  for (std::size_t i = 0; i < first.size(); ++i) {
    EXPECT_EQ(first[i].name, second[i].name);
  }
}

}  // namespace
}  // namespace brisolte
