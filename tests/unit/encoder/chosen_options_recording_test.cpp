// What chosen options do to recordings, whatever they are.

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "common/text.h"
#include "encoder/ffmpeg/chosen_options.h"
#include "encoder/ffmpeg/ffmpeg_encoder.h"
#include "support/captured_log.h"
#include "support/pictures.h"
#include "support/temporary_directory.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::ElementsAre;
using testing::Picture;
using ::testing::StartsWith;
using testing::TemporaryDirectory;

using Chosen = std::vector<EncoderOption>;

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
    for (const std::string& name : ChoosableOptions(*avcodec_find_encoder_by_name(encoder))) {
      for (const char* value : {"-1000000000", "-1", "0", "1", "31", "1000", "1000000000", "x"}) {
        SCOPED_TRACE(std::string(encoder) + " " + name + "=" + value);
        Record(encoder, {{name, value}});
      }
    }
  }
}

}  // namespace
}  // namespace brisolte
