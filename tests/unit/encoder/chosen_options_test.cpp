#include "encoder/ffmpeg/chosen_options.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "support/captured_log.h"

namespace brisolte {
namespace {

using ::testing::AllOf;
using testing::CapturedLog;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::StartsWith;

using Chosen = std::vector<EncoderOption>;

const AVCodec& Codec(const char* name) {
  return *avcodec_find_encoder_by_name(name);
}

std::string ValueOf(const OptionDictionary& options, const char* name) {
  const AVDictionaryEntry* const entry = av_dict_get(options.entries(), name, nullptr, 0);
  return entry == nullptr ? "none" : entry->value;
}

/// The ERROR lines for options that must be refused.
std::vector<std::string> Refusal(const char* codec, const Chosen& chosen) {
  const CapturedLog log(LogLevel::kError);
  OptionDictionary options;
  EXPECT_FALSE(AddChosenOptions(chosen, Codec(codec), options));
  EXPECT_EQ(options.entries(), nullptr);
  return log.lines();
}

TEST(ChosenOptions, AreThoseOfTheEncoderAndThoseOfAll) {
  EXPECT_THAT(ChoosableOptions(Codec("libx264")),
              IsSupersetOf({"crf", "preset", "tune", "g", "qmin", "maxrate"}));
  EXPECT_THAT(ChoosableOptions(Codec("mpeg4")), AllOf(Contains("motion_est"), Not(Contains("crf"))));
}

TEST(ChosenOptions, AreNotWhatTheRecordingDecides) {
  for (const char* codec : {"libx264", "libx265", "libvpx", "mpeg4", "mjpeg", "prores_ks"}) {
    const auto names = ChoosableOptions(Codec(codec));
    for (const char* name : {"b", "bf", "flags", "time_base", "pixel_format", "pix_fmt", "video_size",
                             "width", "color_range", "x264opts", "x264-params", "x265-params",
                             "ts-parameters", "stats", "me_range", "qcomp", "ar", "rc_override_count"}) {
      EXPECT_THAT(names, Not(Contains(name))) << codec;
    }
  }
}

TEST(ChosenOptions, TakeThePlaceOfOurs) {
  OptionDictionary options;
  options.Set("crf", "24");
  options.Set("preset", "veryfast");
  EXPECT_TRUE(AddChosenOptions({{"crf", "18"}, {"g", "5"}, {"g", "7"}}, Codec("libx264"), options));
  EXPECT_EQ(ValueOf(options, "crf"), "18");
  EXPECT_EQ(ValueOf(options, "preset"), "veryfast");
  EXPECT_EQ(ValueOf(options, "g"), "7");
}

TEST(ChosenOptions, AreRefusedWithThoseThatThereAre) {
  EXPECT_THAT(
      Refusal("libx264", {{"crv", "20"}}),
      Contains(
          AllOf(StartsWith("[ERROR] Encoder libx264 has no option crv to choose; there are: preset, tune, "),
                HasSubstr(", crf, "), HasSubstr(", g, "))));
  EXPECT_THAT(Refusal("mpeg4", {{"crf", "20"}}),
              Contains(StartsWith("[ERROR] Encoder mpeg4 has no option crf to choose; ")));
  EXPECT_THAT(Refusal("libx264", {{"", "20"}}),
              Contains(StartsWith("[ERROR] Encoder libx264 has no option  to choose; ")));
  EXPECT_THAT(Refusal("libx264", {{"bf", "2"}}),
              Contains(AllOf(StartsWith("[ERROR] Encoder libx264 has no option bf to choose; there are: "),
                             Not(HasSubstr(", bf, ")))));
}

TEST(ChosenOptions, AreRefusedWithWhatFFmpegSaysOfTheirValue) {
  EXPECT_THAT(Refusal("libx264", {{"crf", "low"}}),
              Contains("[ERROR] Encoder libx264 refuses crf=low: " + ErrorText(AVERROR(EINVAL))));
  EXPECT_THAT(Refusal("libx264", {{"qmin", "1000"}}),
              Contains("[ERROR] Encoder libx264 refuses qmin=1000: " + ErrorText(AVERROR(ERANGE))));
}

}  // namespace
}  // namespace brisolte
