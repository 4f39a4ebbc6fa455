#include "encoder/ffmpeg/ffmpeg_encoder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <random>

#include "common/text.h"
#include "support/captured_log.h"
#include "support/hand_clock.h"
#include "support/pictures.h"
#include "support/temporary_directory.h"
#include "support/tones.h"

namespace brisolte {
namespace {

using ::testing::AllOf;
using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using testing::Picture;
using ::testing::StartsWith;
using testing::TemporaryDirectory;

class FFmpegEncoderTest : public ::testing::Test {
 protected:
  CaptureSettings Settings(const std::string& encoder = "libx264",
                           const std::string& file = "file.mp4") const {
    CaptureSettings settings;
    settings.encoderName = encoder;
    settings.outputFilePath = directory_ / file;
    return settings;
  }

  std::string Content(const std::string& file = "file.mp4") const {
    std::ifstream stream(PathFromUtf8(directory_ / file), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  const TemporaryDirectory directory_;
  const Picture picture_{Picture::Layout::kNv12, 64, 48, {90, 120, 60}};
};

TEST_F(FFmpegEncoderTest, StaysUninitializedWithoutAPath) {
  const CapturedLog log;
  {
    FFmpegEncoder encoder{CaptureSettings()};
    EXPECT_FALSE(encoder.Start());
    EXPECT_FALSE(encoder.Stop());
    EXPECT_FALSE(encoder.Finalize());
    EXPECT_FALSE(encoder.InitializeVideoEncoder(64, 48, nullptr));
    EXPECT_FALSE(encoder.GetPixelFormat());
    EXPECT_FALSE(encoder.ProcessFrameAsync(picture_.Frame(0)));
    EXPECT_FALSE(encoder.Initialize());
  }
  EXPECT_THAT(
      log.lines(),
      ElementsAre("[WARNING] FFmpegEncoder: Output path is empty, initialization cannot proceed",
                  "[ERROR] FFmpegEncoder: Not initialized before starting",
                  "[ERROR] FFmpegEncoder: Not initialized or format context is null",
                  "[ERROR] FFmpegEncoder: Failed to create video stream",
                  "[ERROR] FFmpegEncoder: Video codec context is null, cannot get pixel format",
                  "[ERROR] Video frame not initialized",
                  "[INFO] FFmpegEncoder: Initialization with configuration: ",
                  "[ERROR] Cannot write to output file: ", "[ERROR] Cannot write to output file: ",
                  "[INFO] FFmpegEncoder: Destructor started", "[INFO] FFmpegEncoder: Destructor completed"));
}

TEST_F(FFmpegEncoderTest, RaisesWhatThePreparationOfTheFileRaises) {
  std::ofstream(PathFromUtf8(directory_ / "occupied")) << "something";
  EXPECT_THROW(FFmpegEncoder(Settings("libx264", "occupied/below/file.mp4")),
               std::filesystem::filesystem_error);
}

TEST_F(FFmpegEncoderTest, RecordsFromStartToStop) {
  FFmpegEncoder encoder(Settings());
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  const CapturedLog log;
  EXPECT_TRUE(encoder.Start());
  EXPECT_TRUE(encoder.ProcessFrameAsync(picture_.Frame(0)));
  EXPECT_TRUE(encoder.Stop());
  ASSERT_EQ(log.lines().size(), 6U);
  EXPECT_THAT(log.lines()[0], "[INFO] FFmpegEncoder: Writing file header with 1 streams");
  EXPECT_THAT(log.lines()[1], "[INFO] FFmpegEncoder: Stream #0 is video codec_id: 27");
  EXPECT_THAT(log.lines()[2], "[INFO] FFmpegEncoder: File header written successfully");
  EXPECT_THAT(log.lines()[3],
              AllOf(StartsWith("[INFO] Audio capture starting with timestamp: "), EndsWith(" ms")));
  EXPECT_THAT(log.lines()[4], "[INFO] FFmpegEncoder: Trailer written successfully, output file closed");
  EXPECT_THAT(log.lines()[5], "[INFO] FFmpegEncoder: Writer thread has stopped");
  const std::string content = Content();
  EXPECT_NE(content.find("moov"), std::string::npos);
  EXPECT_LT(content.find("moov"), content.find("mdat"));
}

TEST_F(FFmpegEncoderTest, DescribesTheVideoEncoderItOpened) {
  const CapturedLog log;
  FFmpegEncoder encoder(Settings("mpeg4"));
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  EXPECT_EQ(
      log.lines().back(),
      "[INFO] FFmpegEncoder: Successfully initialized mpeg4 with pixel format: yuv420p time_base:1/60000");
}

TEST_F(FFmpegEncoderTest, WantsNv12ForEncodersThatTakeIt) {
  struct Expectation {
    const char* encoder;
    const char* file;
    bool nv12;
  };
  for (const auto& [name, file, nv12] :
       {Expectation{"libx264", "a.mp4", true}, Expectation{"libx265", "b.mp4", true},
        Expectation{"prores_ks", "c.mov", false}, Expectation{"mjpeg", "d.avi", false}}) {
    FFmpegEncoder encoder(Settings(name, file));
    EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr)) << name;
    EXPECT_EQ(encoder.GetPixelFormat(), nv12) << name;
  }
}

TEST_F(FFmpegEncoderTest, RefusesImpossibleSizes) {
  const CapturedLog log;
  FFmpegEncoder encoder(Settings());
  EXPECT_FALSE(encoder.InitializeVideoEncoder(0, 48, nullptr));
  EXPECT_EQ(log.lines().back(), "[ERROR] FFmpegEncoder: Invalid video dimensions: 0x48");
  EXPECT_FALSE(encoder.InitializeVideoEncoder(64, 0, nullptr));
  EXPECT_EQ(log.lines().back(), "[ERROR] FFmpegEncoder: Invalid video dimensions: 64x0");
  EXPECT_FALSE(encoder.InitializeVideoEncoder(0x80000000U, 0xFFFFFFFFU, nullptr));
  EXPECT_EQ(log.lines().back(), "[ERROR] FFmpegEncoder: Invalid video dimensions: 2147483648x4294967295");
  EXPECT_FALSE(encoder.InitializeVideoEncoder(64, 1, nullptr));
  EXPECT_THAT(log.lines().back(), StartsWith("[ERROR] Failed to allocate video frame buffer: "));
  EXPECT_FALSE(encoder.InitializeVideoEncoder(0x7FFFFFFFU, 0x7FFFFFFFU, nullptr));
  EXPECT_THAT(log.lines().back(), StartsWith("[ERROR] Failed to allocate video frame buffer: "));
  EXPECT_FALSE(encoder.GetPixelFormat());
  EXPECT_EQ(log.lines().back(),
            "[ERROR] FFmpegEncoder: Video codec context is null, cannot get pixel format");
}

TEST_F(FFmpegEncoderTest, NamesAnUnknownEncoder) {
  const CapturedLog log;
  FFmpegEncoder encoder(Settings("nonsense"));
  EXPECT_FALSE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  EXPECT_EQ(log.lines().back(), "[ERROR] Encoder nonsense not found!");
}

TEST_F(FFmpegEncoderTest, ReportsEncodersWithoutPixelFormats) {
  const CapturedLog log;
  FFmpegEncoder encoder(Settings("libmp3lame"));
  EXPECT_FALSE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  EXPECT_EQ(log.lines().back(), "[ERROR] Failed to find suitable pixel format for encoder");
}

TEST_F(FFmpegEncoderTest, ReportsAnEncoderThatCannotBeOpened) {
  CaptureSettings settings = Settings("mjpeg", "file.avi");
  settings.frameRate = 0;
  const CapturedLog log;
  FFmpegEncoder encoder(settings);
  EXPECT_FALSE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  EXPECT_THAT(log.lines().back(), StartsWith("[ERROR] Failed to open encoder: "));
  EXPECT_FALSE(encoder.GetPixelFormat());
}

TEST_F(FFmpegEncoderTest, SurvivesAnyFrameRateAndBitrate) {
  const CapturedLog log;
  for (const char* const name : {"libx264", "libx265", "mpeg4", "libvpx", "prores_ks", "mjpeg"}) {
    for (const int value : {0, -1, 1, std::numeric_limits<int>::min()}) {
      CaptureSettings settings = Settings(name, "file.mov");
      settings.frameRate = value;
      settings.bitrate = value;
      FFmpegEncoder encoder(settings);
      encoder.InitializeVideoEncoder(64, 48, nullptr);
      encoder.Start();
      encoder.ProcessFrameAsync(picture_.Frame(0));
      encoder.Stop();
    }
  }
}

TEST_F(FFmpegEncoderTest, RecordsAfterAFailedAttemptToSetTheVideoUp) {
  FFmpegEncoder encoder(Settings());
  EXPECT_FALSE(encoder.InitializeVideoEncoder(64, 1, nullptr));
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  const CapturedLog log;
  EXPECT_TRUE(encoder.Start());
  EXPECT_TRUE(log.has("[INFO] FFmpegEncoder: Writing file header with 1 streams"));
  EXPECT_TRUE(encoder.ProcessFrameAsync(picture_.Frame(0)));
  EXPECT_TRUE(encoder.Stop());
  EXPECT_TRUE(log.has("[INFO] FFmpegEncoder: Trailer written successfully, output file closed"));
}

TEST_F(FFmpegEncoderTest, ReplacesTheVideoEncoderBeforeTheStartAndKeepsItAfterwards) {
  FFmpegEncoder encoder(Settings());
  EXPECT_TRUE(encoder.InitializeVideoEncoder(32, 32, nullptr));
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  EXPECT_TRUE(encoder.Start());
  const CapturedLog log;
  EXPECT_FALSE(encoder.InitializeVideoEncoder(32, 32, nullptr));
  EXPECT_EQ(log.lines().back(), "[ERROR] FFmpegEncoder: Failed to create video stream");
  EXPECT_TRUE(encoder.GetPixelFormat());
  EXPECT_TRUE(encoder.ProcessFrameAsync(picture_.Frame(0)));
  EXPECT_TRUE(encoder.Stop());
  EXPECT_THAT(log.text(), Not(HasSubstr("write frame:")));
}

TEST_F(FFmpegEncoderTest, InitializingAgainKeepsTheRecording) {
  FFmpegEncoder encoder(Settings());
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  EXPECT_TRUE(encoder.Start());
  EXPECT_TRUE(encoder.ProcessFrameAsync(picture_.Frame(0)));
  EXPECT_TRUE(encoder.Stop());
  EXPECT_TRUE(encoder.Initialize());
  EXPECT_THAT(Content(), HasSubstr("moov"));
}

TEST_F(FFmpegEncoderTest, WarnsOfASecondStart) {
  FFmpegEncoder encoder(Settings());
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  EXPECT_TRUE(encoder.Start());
  {
    const CapturedLog log;
    EXPECT_TRUE(encoder.Start());
    EXPECT_THAT(log.lines(), ElementsAre("[WARNING] FFmpegEncoder: Writer thread is already running"));
  }
  EXPECT_TRUE(encoder.Stop());
}

TEST_F(FFmpegEncoderTest, StopWithoutStartDoesNothing) {
  FFmpegEncoder encoder(Settings());
  const CapturedLog log;
  EXPECT_FALSE(encoder.Stop());
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(FFmpegEncoderTest, CountsEveryPacketAsFailedWithoutAHeader) {
  const testing::HandClock clock;
  // The container takes VP8 and VP9 only, so that its header fails.
  FFmpegEncoder encoder(Settings("libx264", "file.webm"), clock.now());
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  const CapturedLog log;
  EXPECT_TRUE(encoder.Start());
  EXPECT_THAT(log.text(), HasSubstr("[ERROR] FFmpegEncoder: Failed to write file header: "));
  EXPECT_TRUE(encoder.ProcessFrameAsync(picture_.Frame(0)));
  EXPECT_TRUE(encoder.ProcessFrameAsync(picture_.Frame(33)));
  EXPECT_TRUE(encoder.Stop());
  EXPECT_EQ(log.count("[INFO] FFmpegEncoder: write frame:  Stream: 0, Type: Video"), 2);
  EXPECT_TRUE(log.has("[ERROR] FFmpegEncoder: Failed to write trailer!!!!!"));
  EXPECT_TRUE(log.has("[INFO] FFmpegEncoder: Writer thread has stopped"));
}

TEST_F(FFmpegEncoderTest, StartsAndStopsWithoutAnyStream) {
  FFmpegEncoder encoder(Settings());
  const CapturedLog log;
  EXPECT_TRUE(encoder.Start());
  EXPECT_THAT(log.text(), HasSubstr("[ERROR] FFmpegEncoder: Failed to write file header: "));
  EXPECT_TRUE(encoder.Stop());
  EXPECT_TRUE(log.has("[ERROR] FFmpegEncoder: Failed to write trailer!!!!!"));
}

TEST_F(FFmpegEncoderTest, DoesNotBeginAFinishedFileAgain) {
  FFmpegEncoder encoder(Settings());
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  EXPECT_TRUE(encoder.Start());
  EXPECT_TRUE(encoder.ProcessFrameAsync(picture_.Frame(0)));
  EXPECT_TRUE(encoder.Stop());
  const std::string content = Content();
  const CapturedLog log;
  EXPECT_TRUE(encoder.Start());
  EXPECT_THAT(log.text(), HasSubstr("[ERROR] FFmpegEncoder: Failed to write file header: "));
  EXPECT_FALSE(encoder.ProcessFrameAsync(picture_.Frame(33)));
  EXPECT_TRUE(encoder.Stop());
  EXPECT_FALSE(encoder.Finalize());
  EXPECT_EQ(Content(), content);
}

TEST_F(FFmpegEncoderTest, FinalizesOnceAndOnlyWhenStopped) {
  FFmpegEncoder encoder(Settings());
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  const CapturedLog log;
  EXPECT_FALSE(encoder.Finalize());
  EXPECT_EQ(log.lines().back(), "[ERROR] FFmpegEncoder: Failed to write trailer!!!!!");
  EXPECT_TRUE(encoder.Start());
  EXPECT_FALSE(encoder.Finalize());
  EXPECT_TRUE(encoder.ProcessFrameAsync(picture_.Frame(0)));
  EXPECT_TRUE(encoder.Stop());
  EXPECT_FALSE(encoder.Finalize());
  EXPECT_EQ(log.count("[INFO] FFmpegEncoder: Trailer written successfully, output file closed"), 1);
}

TEST_F(FFmpegEncoderTest, CompletesTheFileWhenDestroyedWhileRunning) {
  const CapturedLog log;
  {
    FFmpegEncoder encoder(Settings());
    EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
    EXPECT_TRUE(encoder.Start());
    EXPECT_TRUE(encoder.ProcessFrameAsync(picture_.Frame(0)));
  }
  EXPECT_TRUE(log.has("[INFO] FFmpegEncoder: Trailer written successfully, output file closed"));
  EXPECT_EQ(log.lines().back(), "[INFO] FFmpegEncoder: Destructor completed");
  EXPECT_THAT(Content(), HasSubstr("moov"));
}

TEST_F(FFmpegEncoderTest, RefusesFramesWithoutUsablePixels) {
  FFmpegEncoder encoder(Settings());
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  EXPECT_TRUE(encoder.Start());
  const CapturedLog log;
  EXPECT_FALSE(encoder.ProcessFrameAsync(VideoFrame()));
  VideoFrame unmapped = picture_.Frame(0);
  unmapped.mapped = false;
  EXPECT_FALSE(encoder.ProcessFrameAsync(unmapped));
  EXPECT_EQ(log.count("[ERROR] Video frame not initialized"), 2);
  VideoFrame narrow = picture_.Frame(0);
  narrow.pixels.rowPitch = 63;
  EXPECT_FALSE(encoder.ProcessFrameAsync(narrow));
  EXPECT_EQ(log.lines().back(), "[ERROR] Video frame has an unusable row pitch: 63");
  VideoFrame wide = picture_.Frame(0);
  wide.pixels.rowPitch = 0xFFFFFFFFU;
  EXPECT_FALSE(encoder.ProcessFrameAsync(wide));
  EXPECT_TRUE(encoder.ProcessFrameAsync(picture_.Frame(0)));
  EXPECT_TRUE(encoder.Stop());
}

TEST_F(FFmpegEncoderTest, CannotQueueAFrameBeforeTheStart) {
  FFmpegEncoder encoder(Settings());
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  const CapturedLog log;
  EXPECT_FALSE(encoder.ProcessFrameAsync(picture_.Frame(0)));
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Failed to add video packet to FFmpegWriter"));
}

TEST_F(FFmpegEncoderTest, RefusesFramesAfterTheStop) {
  FFmpegEncoder encoder(Settings());
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  EXPECT_TRUE(encoder.Start());
  EXPECT_TRUE(encoder.ProcessFrameAsync(picture_.Frame(0)));
  EXPECT_TRUE(encoder.Stop());
  const CapturedLog log;
  EXPECT_FALSE(encoder.ProcessFrameAsync(picture_.Frame(33)));
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Failed to send frame to encoder: " + ErrorText(AVERROR_EOF)));
}

TEST_F(FFmpegEncoderTest, KeepsQuietAboutFramesThatTheEncoderHolds) {
  FFmpegEncoder encoder(Settings("libvpx-vp9", "file.webm"));
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  EXPECT_TRUE(encoder.Start());
  const CapturedLog log;
  EXPECT_FALSE(encoder.ProcessFrameAsync(picture_.Frame(0)));
  EXPECT_THAT(log.lines(), IsEmpty());
  EXPECT_TRUE(encoder.Stop());
  EXPECT_THAT(log.text(), Not(HasSubstr("[ERROR]")));
}

TEST_F(FFmpegEncoderTest, SurvivesItsCallsInAnyOrder) {
  const auto seed = std::random_device()();
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  const CapturedLog log(LogLevel::kFatal);
  const std::vector<std::uint8_t> sound(20'000);
  const WaveFormat format = testing::DeviceFormat(SampleType::kFloat32, 2, 48'000);
  for (int round = 0; round < 60; ++round) {
    const std::array names{"libx264", "mpeg4", "mjpeg", "prores_ks", "libvpx", "nonsense"};
    const std::array files{"file.mp4", "file.webm", "file.mov", "file.avi", "file.mp3", "file.unknown"};
    FFmpegEncoder encoder(Settings(names[random() % names.size()], files[random() % files.size()]));
    const std::array<std::uint32_t, 6> sizes{0, 1, 2, 31, 48, 64};
    const std::vector<std::function<void()>> calls{
        [&] { encoder.Initialize(); },
        [&] { encoder.Start(); },
        [&] { encoder.Stop(); },
        [&] { encoder.ProcessFrameAsync(picture_.Frame(random() % 3'600'000)); },
        [&] { encoder.ProcessFrameAsync(VideoFrame()); },
        [&] { encoder.ProcessAudioFrame(sound, random() % 2 == 0 ? "speaker" : "microphone"); },
        [&] { encoder.ProcessAudioFrame({1, 2, 3}, "speaker"); },
        // No size is larger than the picture, whose pixels are then read as either layout.
        [&] {
          encoder.InitializeVideoEncoder(sizes[random() % sizes.size()] / 4,
                                         sizes[random() % sizes.size()] / 2, nullptr);
        },
        [&] { encoder.CreateAudioStream(AudioStreamKind::kSpeaker, nullptr); },
        [&] { encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format); },
        [&] { encoder.GetPixelFormat(); },
        [&] { encoder.Finalize(); },
    };
    for (int call = 0; call < 25; ++call) {
      calls[random() % calls.size()]();
    }
  }
}

}  // namespace
}  // namespace brisolte
