// Recordings that can be played at any moment: what remains of one that is not completed, and that nothing of
// it is left in one that is.

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "common/text.h"
#include "encoder/ffmpeg/ffmpeg_encoder.h"
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
using testing::DecodedAudio;
using testing::DecodedVideo;
using testing::DeviceFormat;
using ::testing::DoubleNear;
using ::testing::ElementsAre;
using testing::FourColours;
using testing::HandClock;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::Picture;
using ::testing::Pointwise;
using testing::ReadSounds;
using testing::ReadVideo;
using ::testing::SizeIs;
using testing::TemporaryDirectory;
using testing::ToneBytes;

constexpr std::size_t kRate = 48'000;

RecordingOptions Throughout(SoundCodec codec = SoundCodec::kMp3) {
  RecordingOptions options;
  options.sound.codec = codec;
  options.playableThroughout = true;
  return options;
}

std::string Content(const std::string& path) {
  std::ifstream file(PathFromUtf8(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The names of the boxes of which a file is made.
std::vector<std::string> BoxNames(const std::string& content) {
  std::vector<std::string> names;
  for (std::size_t at = 0; at + 8 <= content.size();) {
    std::size_t size = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      size = size << 8 | static_cast<unsigned char>(content[at + i]);
    }
    names.push_back(content.substr(at + 4, 4));
    at += std::max<std::size_t>(size, 8);
  }
  return names;
}

class PlayableThroughout : public ::testing::Test {
 protected:
  CaptureSettings Settings(const std::string& encoder, const std::string& file) const {
    CaptureSettings settings;
    settings.encoderName = encoder;
    settings.outputFilePath = directory_ / file;
    return settings;
  }

  /// Waits until a copy of the file, as it would remain if the process ended now, is found to be good.
  bool Becomes(const CaptureSettings& settings, const std::function<bool(const std::string&)>& good) const {
    const std::string copy =
        directory_ / ("copy" + std::filesystem::path(settings.outputFilePath).extension().string());
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < limit) {
      std::filesystem::copy_file(PathFromUtf8(settings.outputFilePath), PathFromUtf8(copy),
                                 std::filesystem::copy_options::overwrite_existing);
      try {
        if (good(copy)) {
          return true;
        }
      } catch (const std::runtime_error&) {
        // Not even a header yet.
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
  }

  TemporaryDirectory directory_;
};

// The last one is missing until it is known how long it is shown.
TEST_F(PlayableThroughout, ShowsAllPicturesButTheLastThoughNoneFollow) {
  const HandClock clock;
  for (const auto& [name, file, layout] : {std::tuple{"libx264", "a.mp4", Picture::Layout::kNv12},
                                           std::tuple{"libx265", "b.mp4", Picture::Layout::kNv12},
                                           std::tuple{"mpeg4", "c.mp4", Picture::Layout::kNv12},
                                           std::tuple{"prores_ks", "d.mov", Picture::Layout::kBgra}}) {
    SCOPED_TRACE(name);
    const CaptureSettings settings = Settings(name, file);
    FFmpegEncoder encoder(settings, clock.now(), Throughout());
    ASSERT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
    ASSERT_TRUE(encoder.Start());
    for (int i = 0; i < 10; ++i) {
      encoder.ProcessFrameAsync(FourColours(layout, 64, 48).Frame(i * 33));
    }
    EXPECT_TRUE(
        Becomes(settings, [](const std::string& copy) { return ReadVideo(copy).frames.size() == 9; }));
    EXPECT_TRUE(encoder.Stop());
    EXPECT_THAT(ReadVideo(settings.outputFilePath).frames, SizeIs(10));
  }
}

TEST_F(PlayableThroughout, GoesOnShowingAPictureThatStandsStill) {
  const CaptureSettings settings = Settings("libx264", "still.mp4");
  FFmpegEncoder encoder(settings, std::chrono::steady_clock::now, Throughout());
  ASSERT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  ASSERT_TRUE(encoder.Start());
  const auto begin = std::chrono::steady_clock::now();
  ASSERT_TRUE(encoder.ProcessFrameAsync(FourColours(Picture::Layout::kNv12, 64, 48).Frame(0)));
  double shown = 0;
  ASSERT_TRUE(Becomes(settings, [&shown](const std::string& copy) {
    const DecodedVideo video = ReadVideo(copy);
    shown = video.frames.empty() ? 0 : video.frames.back().seconds;
    return shown > 3;
  }));
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
  EXPECT_LE(shown, passed.count());
  EXPECT_TRUE(encoder.Stop());
}

/// A recording of pictures and of two sounds, the second of which begins late, with a pause of several
/// seconds in the middle, in which all that was there before has gone into the file.
struct WithPause {
  DecodedVideo video;
  std::vector<DecodedAudio> sounds;
};

class Completed : public PlayableThroughout {
 protected:
  WithPause Record(const CaptureSettings& settings, const RecordingOptions& options) const {
    HandClock clock;
    FFmpegEncoder encoder(settings, clock.now(), options);
    EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
    EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format_));
    EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kSpeaker, &format_));
    EXPECT_TRUE(encoder.Start());
    for (const int second : {0, 2, 7, 9}) {
      clock.Set(second * 1000 + 5);
      if (second > 0) {
        encoder.ProcessAudioFrame(ToneBytes(format_, {{440, 0.5}}, 0, kRate), "speaker");
      }
      encoder.ProcessAudioFrame(ToneBytes(format_, {{440, 0.5}}, 0, kRate), "microphone");
      for (int i = 0; i < 10; ++i) {
        encoder.ProcessFrameAsync(FourColours(Picture::Layout::kNv12, 64, 48).Frame(second * 1000 + i * 40));
      }
      if (options.playableThroughout) {
        pictures_ += 10;
        EXPECT_TRUE(Becomes(settings, [this](const std::string& copy) {
          return ReadVideo(copy).frames.size() + 1 >= pictures_;
        }));
      }
    }
    EXPECT_TRUE(encoder.Stop());
    pictures_ = 0;
    return {ReadVideo(settings.outputFilePath), ReadSounds(settings.outputFilePath)};
  }

  mutable std::size_t pictures_ = 0;
  const WaveFormat format_ = DeviceFormat(SampleType::kFloat32, 2, kRate);
};

/// Without what an encoder puts in front of the first sample.
std::vector<double> FromZero(std::vector<double> seconds) {
  std::erase_if(seconds, [](double time) { return time < 0; });
  return seconds;
}

TEST_F(Completed, IsTheSameAsOneThatIsNotPlayableThroughout) {
  for (const auto& [extension, codec] :
       {std::pair{".mp4", SoundCodec::kMp3}, {".mp4", SoundCodec::kAac}, {".mov", SoundCodec::kAac}}) {
    SCOPED_TRACE(extension);
    const CaptureSettings plain = Settings("libx264", std::string("plain") + extension);
    const CaptureSettings safe = Settings("libx264", std::string("safe") + extension);
    RecordingOptions options = Throughout(codec);
    const WithPause found = Record(safe, options);
    options.playableThroughout = false;
    const WithPause expected = Record(plain, options);
    EXPECT_EQ(found.video.packetSeconds, expected.video.packetSeconds);
    EXPECT_EQ(found.video.keyFrameSeconds, expected.video.keyFrameSeconds);
    EXPECT_EQ(found.video.streams, expected.video.streams);
    EXPECT_NEAR(found.video.seconds, expected.video.seconds, 0.001);
    ASSERT_EQ(found.sounds.size(), expected.sounds.size());
    for (std::size_t i = 0; i < found.sounds.size(); ++i) {
      // A file tells when a stream begins in milliseconds.
      EXPECT_THAT(found.sounds[i].packetSeconds,
                  Pointwise(DoubleNear(0.001), FromZero(expected.sounds[i].packetSeconds)))
          << i;
      EXPECT_EQ(found.sounds[i].title, expected.sounds[i].title) << i;
    }
    const std::string content = Content(safe.outputFilePath);
    EXPECT_THAT(BoxNames(content),
                ElementsAre("ftyp", "moov", extension == std::string(".mov") ? "wide" : "free", "mdat"));
    const std::string index = content.substr(0, content.find("mdat"));
    EXPECT_THAT(index, Not(HasSubstr("mvex")));
    EXPECT_FALSE(std::filesystem::exists(PathFromUtf8(safe.outputFilePath + ".tmp")));
  }
}

TEST_F(Completed, LogsWhatOthersLog) {
  std::vector<std::string> logs;
  for (const bool throughout : {false, true}) {
    const CapturedLog log(LogLevel::kInfo);
    Record(Settings("libx264", "file.mp4"), throughout ? Throughout() : RecordingOptions());
    std::string text;
    for (const std::string& line : log.lines()) {
      text += line.substr(0, line.find(" timestamp: ")) + "\n";
    }
    logs.push_back(text);
  }
  EXPECT_EQ(logs[1], logs[0]);
}

}  // namespace
}  // namespace brisolte
