#include "encoder/ffmpeg/chosen_options.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "common/text.h"
#include "encoder/ffmpeg/ffmpeg_encoder.h"
#include "support/captured_log.h"
#include "support/pictures.h"
#include "support/temporary_directory.h"

namespace brisolte {
namespace {

using ::testing::AllOf;
using testing::CapturedLog;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;
using testing::Picture;
using ::testing::StartsWith;
using testing::TemporaryDirectory;

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

class ChosenOptionsOfRecordings : public ::testing::Test {
 protected:
  /// The size of a recording of a noisy picture; 0 when the encoder is not made.
  std::uintmax_t Record(const char* name, const Chosen& chosen) {
    CaptureSettings settings;
    settings.encoderName = name;
    settings.outputFilePath = directory_ / "file.mp4";
    RecordingOptions options;
    options.encoderOptions = chosen;
    {
      FFmpegEncoder encoder(settings, std::chrono::steady_clock::now, options);
      if (!encoder.InitializeVideoEncoder(64, 48, nullptr)) {
        return 0;
      }
      encoder.Start();
      const Picture& noise = encoder.GetPixelFormat() ? nv12_ : bgra_;
      for (int i = 0; i < 3; ++i) {
        encoder.ProcessFrameAsync(noise.Frame(i * 40));
      }
      encoder.Stop();
    }
    return std::filesystem::file_size(PathFromUtf8(settings.outputFilePath));
  }

  static Picture Noise(Picture::Layout layout) {
    Picture picture{layout, 64, 48, {90, 120, 60}};
    for (std::uint32_t at = 0; at < 64 * 48; at += 8) {
      const double grey = at * 7919U % 256;
      picture.Paint(at % 64, at / 64, 4, 1, {grey, 255 - grey, grey});
    }
    return picture;
  }

  const TemporaryDirectory directory_;
  const Picture nv12_ = Noise(Picture::Layout::kNv12);
  const Picture bgra_ = Noise(Picture::Layout::kBgra);
};

TEST_F(ChosenOptionsOfRecordings, ReachTheEncoder) {
  EXPECT_GT(Record("libx264", {{"crf", "1"}}), Record("libx264", {{"crf", "45"}}) * 3 / 2);
}

TEST_F(ChosenOptionsOfRecordings, ThatAreRefusedKeepItFromStarting) {
  const CapturedLog log(LogLevel::kError);
  EXPECT_EQ(Record("libx264", {{"crv", "20"}}), 0U);
  EXPECT_EQ(Record("libx264", {{"preset", "quick"}}), 0U);
  EXPECT_THAT(log.lines(), ElementsAre(StartsWith("[ERROR] Encoder libx264 has no option crv to choose; "),
                                       StartsWith("[ERROR] Failed to open encoder: ")));
}

TEST_F(ChosenOptionsOfRecordings, HarmNothingWhateverTheyAre) {
  const CapturedLog log(LogLevel::kFatal);
  for (const char* encoder : {"libx264", "mpeg4", "mjpeg", "prores_ks"}) {
    for (const std::string& name : ChoosableOptions(Codec(encoder))) {
      for (const char* value : {"-1000000000", "-1", "0", "1", "31", "1000", "1000000000", "x"}) {
        SCOPED_TRACE(std::string(encoder) + " " + name + "=" + value);
        Record(encoder, {{name, value}});
      }
    }
  }
}

}  // namespace
}  // namespace brisolte
