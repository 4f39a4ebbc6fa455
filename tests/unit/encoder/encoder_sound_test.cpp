#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "encoder/ffmpeg/ffmpeg_encoder.h"
#include "support/captured_log.h"
#include "support/pictures.h"
#include "support/temporary_directory.h"
#include "support/tones.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using testing::DeviceFormat;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::Picture;
using testing::TemporaryDirectory;

const std::string kSkipped = "[WARNING] Audio processing skipped: thread not running or empty data";

/// The face of the encoder: which calls reach which stream.
class EncoderSoundTest : public ::testing::Test {
 protected:
  CaptureSettings Settings(const std::string& file, const std::string& encoder = "libx264") const {
    CaptureSettings settings;
    settings.encoderName = encoder;
    settings.outputFilePath = directory_ / file;
    return settings;
  }

  const TemporaryDirectory directory_;
  const WaveFormat format_ = DeviceFormat(SampleType::kFloat32, 2, 48'000);
  const std::vector<std::uint8_t> chunk_ = std::vector<std::uint8_t>(8192);
  const Picture picture_{Picture::Layout::kNv12, 64, 48, {90, 120, 60}};
};

TEST_F(EncoderSoundTest, SkipsSoundUnlessItRuns) {
  FFmpegEncoder encoder(Settings("file.mp3"));
  EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format_));
  {
    const CapturedLog log;
    EXPECT_FALSE(encoder.ProcessAudioFrame(chunk_, "microphone"));
    EXPECT_FALSE(encoder.ProcessAudioFrame(chunk_, "nobody"));
    EXPECT_THAT(log.lines(), ElementsAre(kSkipped, kSkipped));
  }
  EXPECT_TRUE(encoder.Start());
  EXPECT_TRUE(encoder.ProcessAudioFrame(chunk_, "microphone"));
  {
    const CapturedLog log;
    EXPECT_FALSE(encoder.ProcessAudioFrame({}, "microphone"));
    EXPECT_THAT(log.lines(), ElementsAre(kSkipped));
  }
  EXPECT_TRUE(encoder.Stop());
  const CapturedLog log;
  EXPECT_FALSE(encoder.ProcessAudioFrame(chunk_, "microphone"));
  EXPECT_THAT(log.lines(), ElementsAre(kSkipped));
}

TEST_F(EncoderSoundTest, KnowsItsSourcesByTheirExactNames) {
  FFmpegEncoder encoder(Settings("file.mp3"));
  EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kSpeaker, &format_));
  EXPECT_TRUE(encoder.Start());
  {
    const CapturedLog log;
    EXPECT_FALSE(encoder.ProcessAudioFrame(chunk_, "Microphone"));
    EXPECT_FALSE(encoder.ProcessAudioFrame(chunk_, ""));
    EXPECT_FALSE(encoder.ProcessAudioFrame(chunk_, "speaker "));
    EXPECT_FALSE(encoder.ProcessAudioFrame(chunk_, "microphone"));
    EXPECT_TRUE(encoder.ProcessAudioFrame(chunk_, "speaker"));
    EXPECT_THAT(log.lines(),
                ElementsAre("[ERROR] Invalid stream name: Microphone",
                            "[ERROR] Invalid stream name: ", "[ERROR] Invalid stream name: speaker ",
                            "[ERROR] Audio context not initialized for microphone"));
  }
  EXPECT_TRUE(encoder.Stop());
}

TEST_F(EncoderSoundTest, NumbersTheStreamsOfItsSources) {
  const CapturedLog log;
  FFmpegEncoder encoder(Settings("file.mp4"));
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format_));
  EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kSpeaker, &format_));
  EXPECT_TRUE(log.has("[INFO] Setting as microphone stream (index=1)"));
  EXPECT_TRUE(log.has("[INFO] Setting as speaker stream (index=2)"));
  EXPECT_TRUE(encoder.Start());
  EXPECT_TRUE(log.has("[INFO] FFmpegEncoder: Stream #2 is audio codec_id: 86017"));
  EXPECT_TRUE(encoder.Stop());
}

TEST_F(EncoderSoundTest, RefusesSourcesThatDoNotExist) {
  const CapturedLog log;
  FFmpegEncoder encoder(Settings("file.mp4"));
  EXPECT_FALSE(encoder.CreateAudioStream(static_cast<AudioStreamKind>(0), &format_));
  EXPECT_EQ(log.lines().back(), "[ERROR] Invalid parameters for CreateAudioStream");
  EXPECT_FALSE(encoder.CreateAudioStream(static_cast<AudioStreamKind>(3), &format_));
  FFmpegEncoder uninitialized{CaptureSettings()};
  EXPECT_FALSE(uninitialized.CreateAudioStream(AudioStreamKind::kMicrophone, &format_));
  EXPECT_EQ(log.lines().back(), "[ERROR] Invalid parameters for CreateAudioStream");
  EXPECT_FALSE(uninitialized.ProcessAudioFrame(chunk_, "microphone"));
}

TEST_F(EncoderSoundTest, SaysThatAnMp3FileHoldsOneSound) {
  FFmpegEncoder encoder(Settings("file.mp3"));
  EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format_));
  EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kSpeaker, &format_));
  const CapturedLog log;
  EXPECT_TRUE(encoder.Start());
  EXPECT_TRUE(log.has("[ERROR] FFmpegEncoder: Failed to write file header: Invalid argument"));
  EXPECT_TRUE(
      log.has("[ERROR] FFmpegEncoder: An mp3 file holds one sound, not 2; record either the microphone or "
              "the speaker, or record video as well"));
  for (int i = 0; i < 5; ++i) {
    EXPECT_TRUE(encoder.ProcessAudioFrame(chunk_, "microphone"));
    EXPECT_TRUE(encoder.ProcessAudioFrame(chunk_, "speaker"));
  }
  EXPECT_TRUE(encoder.Stop());
  EXPECT_TRUE(log.has("[INFO] FFmpegEncoder: write frame:  Stream: 0, Type: Audio"));
  EXPECT_TRUE(log.has("[INFO] FFmpegEncoder: write frame:  Stream: 1, Type: Audio"));
  EXPECT_TRUE(log.has("[ERROR] FFmpegEncoder: Failed to write trailer!!!!!"));
  EXPECT_THAT(log.text(), Not(HasSubstr("Failed to add")));
}

TEST_F(EncoderSoundTest, SaysThatAWebmFileDoesNotHoldItsSound) {
  FFmpegEncoder encoder(Settings("file.webm", "libvpx"));
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format_));
  const CapturedLog log;
  EXPECT_TRUE(encoder.Start());
  EXPECT_THAT(log.text(), HasSubstr("[ERROR] FFmpegEncoder: Failed to write file header: "));
  EXPECT_TRUE(log.has(
      "[ERROR] FFmpegEncoder: A webm file cannot hold mp3 sound; record without sound or choose another "
      "video encoder"));
  for (int i = 0; i < 5; ++i) {
    encoder.ProcessFrameAsync(picture_.Frame(i * 33));
    EXPECT_TRUE(encoder.ProcessAudioFrame(chunk_, "microphone"));
  }
  EXPECT_TRUE(encoder.Stop());
  EXPECT_TRUE(log.has("[INFO] FFmpegEncoder: write frame:  Stream: 0, Type: Video"));
  EXPECT_TRUE(log.has("[INFO] FFmpegEncoder: write frame:  Stream: 1, Type: Audio"));
}

TEST_F(EncoderSoundTest, SaysWhichVideoAContainerCannotHold) {
  FFmpegEncoder encoder(Settings("file.webm", "libx264"));
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  const CapturedLog log;
  EXPECT_TRUE(encoder.Start());
  EXPECT_TRUE(
      log.has("[ERROR] FFmpegEncoder: A webm file cannot hold h264 video; choose another video encoder"));
  EXPECT_TRUE(encoder.Stop());
}

TEST_F(EncoderSoundTest, StopsWithStreamsThatNeverHadASound) {
  const CapturedLog log;
  FFmpegEncoder encoder(Settings("file.mp4"));
  EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format_));
  EXPECT_TRUE(encoder.Start());
  EXPECT_TRUE(encoder.ProcessFrameAsync(picture_.Frame(0)));
  EXPECT_TRUE(encoder.Stop());
  EXPECT_TRUE(log.has("[INFO] FFmpegEncoder: Trailer written successfully, output file closed"));
  EXPECT_THAT(log.text(), Not(HasSubstr("[ERROR]")));
}

TEST_F(EncoderSoundTest, DoesNotBeginAFinishedFileAgain) {
  FFmpegEncoder encoder(Settings("file.mp3"));
  EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format_));
  EXPECT_TRUE(encoder.Start());
  EXPECT_TRUE(encoder.ProcessAudioFrame(chunk_, "microphone"));
  EXPECT_TRUE(encoder.Stop());
  const CapturedLog log;
  EXPECT_TRUE(encoder.Start());
  encoder.ProcessAudioFrame(std::vector<std::uint8_t>(16'384), "microphone");
  EXPECT_TRUE(log.has("[ERROR] Failed to send Audio frame to  encoder"));
  EXPECT_TRUE(encoder.Stop());
  EXPECT_FALSE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format_));
  EXPECT_EQ(log.lines().back(), "[ERROR] Failed to create audio stream");
}

}  // namespace
}  // namespace brisolte
