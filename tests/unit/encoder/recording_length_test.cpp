#include <gmock/gmock.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "encoder/ffmpeg/ffmpeg_encoder.h"
#include "recording_cases.h"
#include "support/captured_log.h"
#include "support/decoded_audio.h"
#include "support/decoded_video.h"
#include "support/hand_clock.h"
#include "support/pictures.h"
#include "support/temporary_directory.h"
#include "support/tones.h"
#include "video/frame_pacer.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using testing::DecodedVideo;
using testing::HandClock;
using ::testing::HasSubstr;
using testing::kRecordingCases;
using testing::NameOfCase;
using ::testing::Not;
using testing::Picture;
using testing::ReadVideo;
using testing::RecordingCase;
using testing::Rgb;
using testing::SeekPicture;
using ::testing::SizeIs;
using testing::TemporaryDirectory;

constexpr Rgb kEarly{200, 200, 200};
constexpr Rgb kLate{60, 60, 60};
constexpr std::int64_t kMinute = 60'000;
constexpr std::int64_t kHour = 60 * kMinute;

class RecordingLengthTest : public ::testing::Test {
 protected:
  ~RecordingLengthTest() override {
    EXPECT_THAT(log_.text(), Not(HasSubstr("[ERROR]")));
    EXPECT_THAT(log_.text(), Not(HasSubstr("write frame:")));
  }

  void Start(const RecordingCase& recorded, int frameRate = 30) {
    settings_.encoderName = recorded.encoder;
    settings_.frameRate = frameRate;
    settings_.outputFilePath = directory_ / (std::string("recording.") + recorded.extension);
    layout_ = recorded.layout;
    rule_ = recorded.rule;
    encoder_.emplace(settings_, clock_.now());
    ASSERT_TRUE(encoder_->InitializeVideoEncoder(64, 48, nullptr));
  }

  /// A picture is captured then and arrives at once.
  void Show(std::int64_t milliseconds, const Rgb& colour = kEarly) {
    clock_.Set(milliseconds);
    encoder_->ProcessFrameAsync(Picture(layout_, 64, 48, colour).Frame(milliseconds));
  }

  void Stop(std::int64_t milliseconds) {
    clock_.Set(milliseconds);
    EXPECT_TRUE(encoder_->Stop());
  }

  double Frame() const { return 1.0 / settings_.frameRate; }
  const std::string& path() const { return settings_.outputFilePath; }

  void ExpectShown(double seconds, const Rgb& colour) const {
    const Rgb seen = testing::ToRgb(SeekPicture(path(), seconds).At(32, 24), rule_);
    EXPECT_NEAR(seen.green, colour.green, 12) << "at " << seconds << " s";
  }

  const CapturedLog log_;
  const TemporaryDirectory directory_;
  HandClock clock_;
  CaptureSettings settings_;
  Picture::Layout layout_ = Picture::Layout::kNv12;
  testing::ColourRule rule_ = testing::ColourRule::kBt709Limited;
  std::optional<FFmpegEncoder> encoder_;
};

const RecordingCase& CaseOf(const std::string& encoder) {
  return *std::ranges::find(kRecordingCases, encoder, &RecordingCase::encoder);
}

class EveryContainer : public RecordingLengthTest, public ::testing::WithParamInterface<RecordingCase> {};

TEST_P(EveryContainer, AStillScreenLastsUntilTheStop) {
  Start(GetParam());
  ASSERT_TRUE(encoder_->Start());
  Show(0, kLate);
  Stop(3000);
  const DecodedVideo video = ReadVideo(path());
  EXPECT_NEAR(video.seconds, 3, Frame());
  EXPECT_NEAR(video.frames.front().seconds, 0, 0.001);
  EXPECT_NEAR(video.frames.back().seconds, 3, 1.5 * Frame());
  ExpectShown(1.5, kLate);
  ExpectShown(3, kLate);
}

TEST_P(EveryContainer, TenMinutesOfASlideCanBeSeekedIn) {
  Start(GetParam());
  ASSERT_TRUE(encoder_->Start());
  Show(0, kEarly);
  Show(4 * kMinute, kLate);
  Stop(10 * kMinute);
  EXPECT_NEAR(ReadVideo(path()).seconds, 600, Frame());
  ExpectShown(100, kEarly);
  ExpectShown(239, kEarly);
  ExpectShown(241, kLate);
  ExpectShown(420, kLate);
  ExpectShown(600, kLate);
}

TEST_P(EveryContainer, APictureThatLastsUntilTheStopIsShownOnce) {
  Start(GetParam());
  ASSERT_TRUE(encoder_->Start());
  for (int i = 0; i < 10; ++i) {
    Show(100 * i);
  }
  Stop(900 + 25);
  const DecodedVideo video = ReadVideo(path());
  EXPECT_THAT(video.packetSeconds, SizeIs(10));
  EXPECT_NEAR(video.seconds, 0.925, Frame());
}

TEST_P(EveryContainer, TheLengthDoesNotDependOnHowLateTheLastFrameCame) {
  Start(GetParam());
  ASSERT_TRUE(encoder_->Start());
  Show(0);
  clock_.Set(1500);
  encoder_->ProcessFrameAsync(Picture(layout_, 64, 48, kLate).Frame(1000));
  Stop(3000);
  EXPECT_NEAR(ReadVideo(path()).seconds, 3, Frame());
}

TEST_P(EveryContainer, APauseOfHalfADayDoesNotEndThePicture) {
  Start(GetParam(), 5);
  ASSERT_TRUE(encoder_->Start());
  Show(0, kEarly);
  Show(12 * kHour, kLate);
  Show(12 * kHour + 1000, kEarly);
  Stop(13 * kHour);
  EXPECT_NEAR(ReadVideo(path()).seconds, 13 * 3600, Frame());
  ExpectShown(12 * 3600 - 1, kEarly);
  ExpectShown(12 * 3600 + 0.5, kLate);
  ExpectShown(12 * 3600 + 2, kEarly);
  ExpectShown(13 * 3600, kEarly);
}

TEST_P(EveryContainer, ARecordingWithoutAFrameStaysWithoutOne) {
  Start(GetParam());
  ASSERT_TRUE(encoder_->Start());
  Stop(3000);
  EXPECT_EQ(log_.count("[INFO] FFmpegEncoder: Trailer written successfully, output file closed"), 1);
}

INSTANTIATE_TEST_SUITE_P(Encoders, EveryContainer, ::testing::ValuesIn(kRecordingCases), NameOfCase);

TEST_F(RecordingLengthTest, APauseAtTheHighestFrameRateDoesNotEndThePictureOfAnAvi) {
  Start(CaseOf("mjpeg"), 120);
  ASSERT_TRUE(encoder_->Start());
  Show(0, kEarly);
  Show(20 * kMinute, kLate);
  Stop(40 * kMinute);
  EXPECT_NEAR(ReadVideo(path()).seconds, 2400, Frame());
  ExpectShown(1199, kEarly);
  ExpectShown(1201, kLate);
}

// The picture stands still, the sound goes on until the stop.
TEST_F(RecordingLengthTest, PictureAndSoundOfAStillScreenEndTogether) {
  for (const char* const encoder : {"libx264", "prores_ks", "mjpeg"}) {
    SCOPED_TRACE(encoder);
    Start(CaseOf(encoder));
    const WaveFormat format = testing::DeviceFormat(SampleType::kFloat32, 2, 48'000);
    ASSERT_TRUE(encoder_->CreateAudioStream(AudioStreamKind::kMicrophone, &format));
    clock_.Set(0);
    ASSERT_TRUE(encoder_->Start());
    Show(0);
    const std::vector<std::uint8_t> tenMilliseconds(std::size_t{480} * format.blockAlign);
    for (int milliseconds = 10; milliseconds <= 20'000; milliseconds += 10) {
      clock_.Set(milliseconds);
      encoder_->ProcessAudioFrame(tenMilliseconds, "microphone");
    }
    Stop(20'000);
    EXPECT_NEAR(ReadVideo(path()).seconds, 20, Frame());
    EXPECT_NEAR(ReadVideo(path()).frames.back().seconds, 20, 1.5 * Frame());
    EXPECT_NEAR(testing::ReadSounds(path()).front().packetSeconds.back(), 20, 0.06);
  }
}

// The encoder refuses a picture a day and more after the one before.
TEST(RecordingLength, AnEncoderThatRefusesPicturesIsGivenNoLastOne) {
  const CapturedLog log;
  const TemporaryDirectory directory;
  HandClock clock;
  CaptureSettings settings;
  settings.encoderName = "mpeg4";
  settings.outputFilePath = directory / "file.mp4";
  FFmpegEncoder encoder(settings, clock.now());
  ASSERT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  ASSERT_TRUE(encoder.Start());
  const Picture picture(Picture::Layout::kNv12, 64, 48, kEarly);
  EXPECT_TRUE(encoder.ProcessFrameAsync(picture.Frame(0)));
  EXPECT_FALSE(encoder.ProcessFrameAsync(picture.Frame(192 * kHour)));
  clock.Set(1000);
  EXPECT_TRUE(encoder.Stop());
  EXPECT_EQ(std::ranges::count_if(log.lines(), [](const auto& line) { return line.starts_with("[ERROR]"); }),
            1)
      << log.text();
}

/// The captures of a source that shows a new picture at each of its refreshes, as they are paced.
std::vector<std::int64_t> PacedCaptures(int frameRate, int hertz, int seconds) {
  constexpr std::int64_t kStart = 1000;
  FramePacer pacer(frameRate);
  std::vector<std::int64_t> captures;
  for (std::int64_t refresh = 0; refresh * 1000 / hertz < 1000LL * seconds; ++refresh) {
    if (const auto timing = pacer.Arrive(kStart + refresh * 1000 / hertz).accepted) {
      captures.push_back(timing->sinceStart);
    }
  }
  return captures;
}

struct Motion {
  int frameRate;
  int hertz;
};

void PrintTo(const Motion& motion, std::ostream* stream) {
  *stream << motion.frameRate << " fps of " << motion.hertz << " Hz";
}

std::vector<Motion> Motions() {
  std::vector<Motion> motions;
  for (const int frameRate : {24, 25, 30, 50, 60}) {
    for (const int hertz : {60, 75, 120, 144, 165, 240}) {
      motions.push_back({frameRate, hertz});
    }
  }
  return motions;
}

class MotionJpeg : public RecordingLengthTest, public ::testing::WithParamInterface<Motion> {};

TEST_P(MotionJpeg, MotionLastsAsLongAsItTook) {
  const auto [frameRate, hertz] = GetParam();
  Start(CaseOf("mjpeg"), frameRate);
  ASSERT_TRUE(encoder_->Start());
  const auto captures = PacedCaptures(frameRate, hertz, 10);
  for (const std::int64_t capture : captures) {
    Show(capture);
  }
  Stop(10'000);
  const DecodedVideo video = ReadVideo(path());
  // The last picture may begin a tick late, and lasts for one.
  EXPECT_NEAR(video.seconds, 10, 2 * Frame());
  // Nothing is left out that there is a tick for.
  const std::size_t ticks = std::size_t{10} * static_cast<std::size_t>(frameRate);
  EXPECT_GE(video.packetSeconds.size(), std::min(captures.size(), ticks) * 98 / 100);
}

INSTANTIATE_TEST_SUITE_P(Sources, MotionJpeg, ::testing::ValuesIn(Motions()), [](const auto& instance) {
  return std::to_string(instance.param.frameRate) + "FpsOf" + std::to_string(instance.param.hertz) + "Hz";
});

}  // namespace
}  // namespace brisolte
