#include <gmock/gmock.h>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
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

namespace brisolte {
namespace {

using testing::CapturedLog;
using testing::ColourRule;
using testing::DecodedVideo;
using testing::DeviceFormat;
using testing::FourColours;
using testing::HandClock;
using ::testing::HasSubstr;
using testing::kRecordingCases;
using testing::NameOfCase;
using ::testing::Not;
using testing::Picture;
using testing::ReadSounds;
using testing::ReadVideo;
using testing::RecordingCase;
using testing::Rgb;
using ::testing::SizeIs;
using testing::TemporaryDirectory;
using testing::ToneBytes;

class Recording : public ::testing::TestWithParam<RecordingCase> {
 protected:
  CaptureSettings Settings() const {
    CaptureSettings settings;
    settings.encoderName = GetParam().encoder;
    settings.outputFilePath = directory_ / (std::string("recording.") + GetParam().extension);
    return settings;
  }

  DecodedVideo Read() const { return ReadVideo(Settings().outputFilePath); }

  /// Records pictures that `paint` gives for each number, 30 a second, and stops with the last one.
  template <typename Paint>
  DecodedVideo Record(std::uint32_t width, std::uint32_t height, int frames, Paint paint) {
    FFmpegEncoder encoder(Settings(), clock_.now());
    EXPECT_TRUE(encoder.InitializeVideoEncoder(width, height, nullptr));
    EXPECT_EQ(encoder.GetPixelFormat(), GetParam().layout == Picture::Layout::kNv12);
    EXPECT_TRUE(encoder.Start());
    for (int i = 0; i < frames; ++i) {
      const Picture picture = paint(i);
      encoder.ProcessFrameAsync(picture.Frame(i * 1000 / 30));
    }
    EXPECT_TRUE(encoder.Stop());
    return Read();
  }

  const HandClock clock_;  ///< stands still: what a test takes its time for is not recorded
  TemporaryDirectory directory_;
};

void ExpectColour(const testing::DecodedFrame& frame, int x, int y, const Rgb& expected, ColourRule rule) {
  const Rgb seen = testing::ToRgb(frame.At(x, y), rule);
  EXPECT_NEAR(seen.red, expected.red, 12) << "at " << x << "," << y;
  EXPECT_NEAR(seen.green, expected.green, 12) << "at " << x << "," << y;
  EXPECT_NEAR(seen.blue, expected.blue, 12) << "at " << x << "," << y;
}

void ExpectFourColours(const DecodedVideo& video, ColourRule rule) {
  for (const auto& frame : video.frames) {
    ExpectColour(frame, video.width / 8, video.height / 8, testing::kFourColours[0], rule);
    ExpectColour(frame, video.width * 7 / 8, video.height / 8, testing::kFourColours[1], rule);
    ExpectColour(frame, video.width / 8, video.height * 7 / 8, testing::kFourColours[2], rule);
    ExpectColour(frame, video.width * 7 / 8, video.height * 7 / 8, testing::kFourColours[3], rule);
    ExpectColour(frame, video.width - 1, video.height - 1, testing::kFourColours[3], rule);
  }
}

/// What the file tells players about its colours.
void ExpectLabels(const DecodedVideo& video, ColourRule rule) {
  if (rule == ColourRule::kBt601Full) {
    EXPECT_EQ(video.range, AVCOL_RANGE_JPEG);
    return;
  }
  // QuickTime files have no place for the range; what it is there is this one.
  EXPECT_NE(video.range, AVCOL_RANGE_JPEG);
  EXPECT_EQ(video.space, AVCOL_SPC_BT709);
  EXPECT_EQ(video.primaries, AVCOL_PRI_BT709);
  EXPECT_EQ(video.transfer, AVCOL_TRC_BT709);
}

void ExpectRising(const std::vector<double>& seconds) {
  for (std::size_t i = 1; i < seconds.size(); ++i) {
    EXPECT_GT(seconds[i], seconds[i - 1]);
  }
}

TEST_P(Recording, ShowsTheColoursAndEveryFrame) {
  const CapturedLog log;
  const DecodedVideo video =
      Record(160, 120, 5, [](int) { return FourColours(GetParam().layout, 160, 120); });
  EXPECT_EQ(video.codec, GetParam().codec);
  EXPECT_EQ(video.streams, 1U);
  EXPECT_EQ(video.width, 160);
  EXPECT_EQ(video.height, 120);
  EXPECT_THAT(video.frames, SizeIs(5));
  ExpectFourColours(video, GetParam().rule);
  ExpectLabels(video, GetParam().rule);
  EXPECT_THAT(log.text(), Not(HasSubstr("[ERROR]")));
  EXPECT_THAT(log.text(), Not(HasSubstr("write frame:")));
}

TEST_P(Recording, WritesNothingAnywhereAtTheHighestLogLevel) {
  const CapturedLog log(LogLevel::kFatal);
  ::testing::internal::CaptureStderr();
  const DecodedVideo video =
      Record(160, 120, 5, [](int) { return FourColours(GetParam().layout, 160, 120); });
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(log.text(), "");
  EXPECT_THAT(video.frames, SizeIs(5));
}

TEST_P(Recording, LosesTheLastRowOfAnOddHeight) {
  const CapturedLog log;
  const DecodedVideo video =
      Record(160, 121, 3, [](int) { return FourColours(GetParam().layout, 160, 121); });
  EXPECT_TRUE(log.has("[INFO] FFmpegEncoder: Adjusting video height to even: 121 -> 120"));
  EXPECT_EQ(video.width, 160);
  EXPECT_EQ(video.height, 120);
  EXPECT_THAT(video.frames, SizeIs(3));
  ExpectFourColours(video, GetParam().rule);
}

TEST_P(Recording, IsMadeSmallerWhereItWouldBeLargerThanItMayBe) {
  const CapturedLog log(LogLevel::kError);
  RecordingOptions options;
  options.largestPicture = PictureSize{160, 1000};
  FFmpegEncoder encoder(Settings(), clock_.now(), options);
  ASSERT_TRUE(encoder.InitializeVideoEncoder(481, 361, nullptr));
  EXPECT_FALSE(encoder.GetPixelFormat()) << "which is made smaller from packed pixels";
  ASSERT_TRUE(encoder.Start());
  const Picture picture = FourColours(Picture::Layout::kBgra, 481, 361);
  encoder.ProcessFrameAsync(picture.Frame(0));
  encoder.ProcessFrameAsync(picture.Frame(40));
  EXPECT_TRUE(encoder.Stop());
  const DecodedVideo video = Read();
  EXPECT_EQ(std::pair(video.width, video.height), std::pair(160, 120));
  EXPECT_THAT(video.frames, SizeIs(2));
  ExpectFourColours(video, GetParam().rule);
  ExpectLabels(video, GetParam().rule);
  EXPECT_EQ(log.text(), "");
}

TEST_P(Recording, StaysAsItIsWhereItMayBeLarger) {
  RecordingOptions options;
  options.largestPicture = PictureSize{160, 120};
  FFmpegEncoder encoder(Settings(), clock_.now(), options);
  ASSERT_TRUE(encoder.InitializeVideoEncoder(160, 120, nullptr));
  EXPECT_EQ(encoder.GetPixelFormat(), GetParam().layout == Picture::Layout::kNv12);
}

TEST_P(Recording, HasRisingTimesAndAKeyFrameEachSecond) {
  const DecodedVideo video = Record(64, 48, 70, [](int i) {
    return Picture(GetParam().layout, 64, 48, {20.0 + 3 * i, 20.0 + 3 * i, 20.0 + 3 * i});
  });
  ASSERT_THAT(video.frames, SizeIs(70));
  ASSERT_THAT(video.packetSeconds, SizeIs(70));
  ExpectRising(video.packetSeconds);
  EXPECT_NEAR(video.packetSeconds.back() - video.packetSeconds.front(), 69.0 / 30, 0.05);
  ASSERT_FALSE(video.keyFrameSeconds.empty());
  EXPECT_NEAR(video.keyFrameSeconds.front(), 0, 0.001);
  for (std::size_t i = 1; i < video.keyFrameSeconds.size(); ++i) {
    EXPECT_LE(video.keyFrameSeconds[i] - video.keyFrameSeconds[i - 1], 1.01);
  }
  EXPECT_LE(video.packetSeconds.back() - video.keyFrameSeconds.back(), 1.01);
}

// Each picture's grey tells its number, so that one shown for another would be seen.
TEST_P(Recording, ShowsEachPictureAtItsPlace) {
  const auto grey = [](int i) { return 30.0 + (i * 7 % 10) * 20; };
  const DecodedVideo video = Record(
      64, 48, 40, [&](int i) { return Picture(GetParam().layout, 64, 48, {grey(i), grey(i), grey(i)}); });
  ASSERT_THAT(video.frames, SizeIs(40));
  for (int i = 0; i < 40; ++i) {
    ExpectColour(video.frames[static_cast<std::size_t>(i)], 32, 24, {grey(i), grey(i), grey(i)},
                 GetParam().rule);
  }
}

/// Recordings for which one encoder is enough.
class OneRecording : public ::testing::Test {
 protected:
  CaptureSettings Settings(const char* encoder, const char* file) const {
    CaptureSettings settings;
    settings.encoderName = encoder;
    settings.outputFilePath = directory_ / file;
    return settings;
  }

  const HandClock clock_;  ///< stands still: what a test takes its time for is not recorded
  TemporaryDirectory directory_;
};

TEST_F(OneRecording, KeepsFramesOfTheSameMillisecondApart) {
  const CaptureSettings settings = Settings("libx264", "file.mp4");
  const Picture picture(Picture::Layout::kNv12, 64, 48, {10, 20, 30});
  FFmpegEncoder encoder(settings, clock_.now());
  ASSERT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  ASSERT_TRUE(encoder.Start());
  for (const std::int64_t milliseconds : {0, 20, 20, 20, 10, 40}) {
    EXPECT_TRUE(encoder.ProcessFrameAsync(picture.Frame(milliseconds)));
  }
  ASSERT_TRUE(encoder.Stop());
  const DecodedVideo video = ReadVideo(settings.outputFilePath);
  ASSERT_THAT(video.packetSeconds, SizeIs(6));
  ExpectRising(video.packetSeconds);
  EXPECT_NEAR(video.packetSeconds.back(), 0.040, 0.001);
}

// The ProRes encoders do not: one refuses the width, the other one spoils the last column's colour.
TEST_F(OneRecording, KeepsAnOddWidthWhereTheEncoderDoes) {
  struct Format {
    const char* encoder;
    const char* file;
    Picture::Layout layout;
    ColourRule rule;
  };
  for (const auto& [name, file, layout, rule] :
       {Format{"mpeg4", "a.mp4", Picture::Layout::kNv12, ColourRule::kBt709Limited},
        Format{"libvpx", "b.webm", Picture::Layout::kNv12, ColourRule::kBt709Limited},
        Format{"mjpeg", "c.avi", Picture::Layout::kBgra, ColourRule::kBt601Full}}) {
    SCOPED_TRACE(name);
    const CaptureSettings settings = Settings(name, file);
    FFmpegEncoder encoder(settings, clock_.now());
    ASSERT_TRUE(encoder.InitializeVideoEncoder(161, 121, nullptr));
    ASSERT_TRUE(encoder.Start());
    encoder.ProcessFrameAsync(FourColours(layout, 161, 121).Frame(0));
    ASSERT_TRUE(encoder.Stop());
    const DecodedVideo video = ReadVideo(settings.outputFilePath);
    EXPECT_EQ(video.width, 161);
    EXPECT_EQ(video.height, 120);
    ASSERT_THAT(video.frames, SizeIs(1));
    ExpectFourColours(video, rule);
  }
}

TEST_F(OneRecording, NamesItsStreamAndWorksInAnyScript) {
  const CaptureSettings settings = Settings("libx264", "\xC3\xBC\xE6\xBC\xA2/\xF0\x9F\x8E\xA5.mp4");
  FFmpegEncoder encoder(settings, clock_.now());
  ASSERT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  ASSERT_TRUE(encoder.Start());
  EXPECT_TRUE(encoder.ProcessFrameAsync(Picture(Picture::Layout::kNv12, 64, 48, {10, 20, 30}).Frame(0)));
  ASSERT_TRUE(encoder.Stop());
  const DecodedVideo video = ReadVideo(settings.outputFilePath);
  EXPECT_EQ(video.handlerName, "VideoHandler");
  EXPECT_EQ(video.language, "eng");
}

/// What can be seen of a file while it is being written, as it would remain if the process ended now.
class Unfinished : public OneRecording {
 protected:
  /// Waits until `count` finds as much in the file as it is to find at least.
  void ExpectSoon(const CaptureSettings& settings, std::size_t expected,
                  const std::function<std::size_t(const std::string&)>& count) const {
    const std::string copy = directory_ / "copy";
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    std::size_t found = 0;
    while (found < expected && std::chrono::steady_clock::now() < limit) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      std::filesystem::copy_file(settings.outputFilePath, copy,
                                 std::filesystem::copy_options::overwrite_existing);
      try {
        found = count(copy);
      } catch (const std::runtime_error&) {
        found = 0;  // not even a header yet
      }
    }
    EXPECT_GE(found, expected);
  }

  static std::size_t Frames(const std::string& path) { return ReadVideo(path).frames.size(); }
  static std::size_t Samples(const std::string& path) { return ReadSounds(path).at(0).samples(); }

  // Of a second of sound the encoder may hold back a few frames.
  static constexpr std::size_t kSecond = 48'000;
  static constexpr std::size_t kMostHeld = 6 * 1152;
  const WaveFormat format_ = DeviceFormat(SampleType::kFloat32, 2, kSecond);
};

TEST_F(Unfinished, ShowsAllPicturesThoughNoneFollow) {
  for (const auto& [name, file, layout] : {std::tuple{"mjpeg", "file.avi", Picture::Layout::kBgra},
                                           std::tuple{"libvpx", "file.webm", Picture::Layout::kNv12}}) {
    SCOPED_TRACE(name);
    const CaptureSettings settings = Settings(name, file);
    FFmpegEncoder encoder(settings, clock_.now());
    ASSERT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
    ASSERT_TRUE(encoder.Start());
    for (int i = 0; i < 10; ++i) {
      EXPECT_TRUE(encoder.ProcessFrameAsync(FourColours(layout, 64, 48).Frame(i * 33)));
    }
    ExpectSoon(settings, 10, Frames);
    EXPECT_TRUE(encoder.Stop());
    EXPECT_EQ(Frames(settings.outputFilePath), 10U);
  }
}

// The muxer would keep the sound back, so as to sort it in before the next picture.
TEST_F(Unfinished, HoldsTheSoundOfAScreenThatStandsStill) {
  const CaptureSettings settings = Settings("mjpeg", "file.avi");
  FFmpegEncoder encoder(settings);
  ASSERT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  ASSERT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format_));
  ASSERT_TRUE(encoder.Start());
  EXPECT_TRUE(encoder.ProcessFrameAsync(FourColours(Picture::Layout::kBgra, 64, 48).Frame(0)));
  EXPECT_TRUE(encoder.ProcessAudioFrame(ToneBytes(format_, {{440, 0.5}}, 0, kSecond), "microphone"));
  ExpectSoon(settings, kSecond - kMostHeld, Samples);
  EXPECT_TRUE(encoder.Stop());
}

TEST_F(Unfinished, HoldsTheSoundRecordedAlone) {
  const CaptureSettings settings = Settings("libx264", "file.mp3");
  FFmpegEncoder encoder(settings);
  ASSERT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format_));
  ASSERT_TRUE(encoder.Start());
  EXPECT_TRUE(encoder.ProcessAudioFrame(ToneBytes(format_, {{440, 0.5}}, 0, kSecond), "microphone"));
  ExpectSoon(settings, kSecond - kMostHeld, Samples);
  EXPECT_TRUE(encoder.Stop());
}

/// An encoder whose decoder must be configured before the first picture, and the tag that players know it by.
struct Configured {
  const char* encoder;
  const char* extension;
  const char* tag;
};

std::ostream& operator<<(std::ostream& stream, const Configured& value) {
  return stream << value.encoder << " in " << value.extension;
}

class Configuration : public OneRecording, public ::testing::WithParamInterface<Configured> {};

TEST_P(Configuration, IsInTheFileUnderTheTagThatPlayersKnow) {
  const CaptureSettings settings =
      Settings(GetParam().encoder, (std::string("file.") + GetParam().extension).c_str());
  const CapturedLog log;
  FFmpegEncoder encoder(settings, clock_.now());
  ASSERT_TRUE(encoder.InitializeVideoEncoder(160, 120, nullptr));
  ASSERT_TRUE(encoder.Start());
  for (int i = 0; i < 3; ++i) {
    encoder.ProcessFrameAsync(FourColours(Picture::Layout::kNv12, 160, 120).Frame(i * 40));
  }
  ASSERT_TRUE(encoder.Stop());
  const DecodedVideo video = ReadVideo(settings.outputFilePath);
  EXPECT_GT(video.configurationBytes, 0);
  EXPECT_EQ(video.tag, GetParam().tag);
  ASSERT_THAT(video.frames, SizeIs(3));
  ExpectFourColours(video, ColourRule::kBt709Limited);
  EXPECT_THAT(log.text(), Not(HasSubstr("[ERROR]")));
}

// The module's own FFmpeg has AV1 only on graphics cards; the container treats it alike.
INSTANTIATE_TEST_SUITE_P(
    Encoders, Configuration,
    ::testing::Values(Configured{"libx264", "mp4", "avc1"}, Configured{"libx264", "mov", "avc1"},
                      Configured{"libx265", "mp4", "hvc1"}, Configured{"libx265", "mov", "hvc1"},
                      Configured{"mpeg4", "mp4", "mp4v"}, Configured{"mpeg4", "mov", "mp4v"},
                      Configured{"libaom-av1", "mp4", "av01"}),
    [](const auto& instance) {
      std::string name = std::string(instance.param.encoder) + instance.param.extension;
      std::erase(name, '-');
      return name;
    });

INSTANTIATE_TEST_SUITE_P(Encoders, Recording, ::testing::ValuesIn(kRecordingCases), NameOfCase);

}  // namespace
}  // namespace brisolte
