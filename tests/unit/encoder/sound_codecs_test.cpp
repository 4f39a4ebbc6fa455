// Sound in the codecs that a recording can be asked for, read back out of its file.

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "encoder/ffmpeg/ffmpeg_encoder.h"
#include "support/captured_log.h"
#include "support/decoded_audio.h"
#include "support/hand_clock.h"
#include "support/pictures.h"
#include "support/temporary_directory.h"
#include "support/tones.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using testing::CountStreams;
using testing::DecodedAudio;
using testing::DeviceFormat;
using testing::FitTone;
using testing::HandClock;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::Picture;
using testing::ReadSounds;
using ::testing::SizeIs;
using testing::TemporaryDirectory;
using testing::Tone;
using testing::ToneBytes;

/// A recording with sound of one kind.
struct SoundCase {
  const char* name;
  SoundCodec codec;
  const char* video;
  const char* file;
  bool playableThroughout;
};

std::ostream& operator<<(std::ostream& stream, const SoundCase& value) {
  return stream << value.name;
}

const char* NameOf(SoundCodec codec) {
  switch (codec) {
    case SoundCodec::kMp3:
      return "mp3";
    case SoundCodec::kAac:
      return "aac";
    case SoundCodec::kOpus:
      return "opus";
  }
  return "";
}

int FrameOf(SoundCodec codec) {
  switch (codec) {
    case SoundCodec::kMp3:
      return 1152;
    case SoundCodec::kAac:
      return 1024;
    case SoundCodec::kOpus:
      return 960;
  }
  return 0;
}

class SoundCodecs : public ::testing::TestWithParam<SoundCase> {
 protected:
  CaptureSettings Settings() const {
    CaptureSettings settings;
    settings.encoderName = GetParam().video;
    settings.outputFilePath = path();
    return settings;
  }

  std::string path() const { return directory_ / GetParam().file; }

  static RecordingOptions Options(std::int32_t bitRate = 0) {
    RecordingOptions options;
    options.playableThroughout = GetParam().playableThroughout;
    options.sound = {GetParam().codec, bitRate};
    return options;
  }

  /// What becomes of a microphone's samples, beside a picture, without regard to their times.
  DecodedAudio Recorded(const WaveFormat& format, const std::vector<std::uint8_t>& bytes,
                        std::int32_t bitRate = 0) const {
    FFmpegEncoder encoder(Settings(), std::chrono::steady_clock::now, Options(bitRate));
    EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
    EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format));
    EXPECT_TRUE(encoder.Start());
    for (int i = 0; i < 10; ++i) {
      encoder.ProcessFrameAsync(picture_.Frame(i * 33));
    }
    encoder.ProcessAudioFrame(bytes, "microphone");
    EXPECT_TRUE(encoder.Stop());
    const auto sounds = ReadSounds(path());
    EXPECT_THAT(sounds, SizeIs(1));
    return sounds.empty() ? DecodedAudio() : sounds.front();
  }

  void ExpectNoProblem() const {
    EXPECT_THAT(log_.text(), Not(HasSubstr("[ERROR]")));
    EXPECT_THAT(log_.text(), Not(HasSubstr("write frame:")));
  }

  const CapturedLog log_;
  const TemporaryDirectory directory_;
  const Picture picture_{Picture::Layout::kNv12, 64, 48, {90, 120, 60}};
};

/// How much of a tone is in a sound, away from its beginning and end.
testing::ToneFit Middle(const std::vector<float>& samples, const Tone& tone, int rate) {
  constexpr std::size_t kEdge = 4000;
  if (samples.size() <= 3 * kEdge) {
    ADD_FAILURE() << "only " << samples.size() << " samples";
    return {};
  }
  return FitTone(std::span(samples).subspan(kEdge, samples.size() - 3 * kEdge), tone.frequency, rate);
}

void ExpectTone(const std::vector<float>& samples, const Tone& tone, int rate) {
  const auto fit = Middle(samples, tone, rate);
  EXPECT_NEAR(20 * std::log10(fit.level / tone.level), 0, 1);
  EXPECT_LT(fit.residual, tone.level / 10);
}

TEST_P(SoundCodecs, KeepAllOfASound) {
  for (const int rate : {44'100, 48'000}) {
    for (const std::uint16_t channels : std::array<std::uint16_t, 2>{1, 2}) {
      SCOPED_TRACE(std::to_string(rate) + " Hz, " + std::to_string(channels) + " channels");
      const WaveFormat format =
          DeviceFormat(SampleType::kFloat32, channels, static_cast<std::uint32_t>(rate));
      const std::vector<Tone> tones{{440, 0.5}, {1000, 0.25}};
      const auto samples = static_cast<std::size_t>(rate);
      const DecodedAudio sound = Recorded(format, ToneBytes(format, tones, 0, samples));
      const int encoded = GetParam().codec == SoundCodec::kOpus ? 48'000 : rate;
      EXPECT_EQ(sound.codec, NameOf(GetParam().codec));
      EXPECT_EQ(sound.title, "Microphone");
      EXPECT_EQ(sound.sampleRate, encoded);
      // What begins with the recording has a packet in front of it, for which a fragment has no time.
      EXPECT_GE(sound.samples() + 480, static_cast<std::size_t>(encoded));
      EXPECT_LE(sound.samples(), static_cast<std::size_t>(encoded + 3 * FrameOf(GetParam().codec)));
      ASSERT_THAT(sound.channels, SizeIs(channels));
      for (std::size_t i = 0; i < channels; ++i) {
        ExpectTone(sound.channels[i], tones[i], encoded);
      }
    }
  }
  ExpectNoProblem();
}

// What a device delivers at once has nearly the same time.
TEST_P(SoundCodecs, GiveFFmpegNoTimesToRemarkOn) {
  const WaveFormat format = DeviceFormat(SampleType::kFloat32, 2, 48'000);
  FFmpegEncoder encoder(Settings(), std::chrono::steady_clock::now, Options());
  ASSERT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  ASSERT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format));
  ::testing::internal::CaptureStderr();
  encoder.Start();
  encoder.ProcessAudioFrame(ToneBytes(format, {{440, 0.5}}, 0, 48'000), "microphone");
  encoder.Stop();
  EXPECT_THAT(::testing::internal::GetCapturedStderr(), Not(HasSubstr("backward in time")));
}

// A player shows the picture that the recorder saw when it heard this.
TEST_P(SoundCodecs, KeepTheTimeOfASound) {
  constexpr std::size_t kRate = 48'000;
  constexpr std::size_t kChunk = 1024;
  constexpr std::size_t kQuietChunks = 24;
  const WaveFormat format = DeviceFormat(SampleType::kFloat32, 1, kRate);
  for (const int begin : {0, 5, 25, 400}) {
    SCOPED_TRACE(begin);
    HandClock clock;
    FFmpegEncoder encoder(Settings(), clock.now(), Options());
    ASSERT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
    ASSERT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format));
    ASSERT_TRUE(encoder.Start());
    for (std::size_t i = 0; i < 3 * kQuietChunks; ++i) {
      const auto time = begin + static_cast<int>(i * kChunk * 1000 / kRate);
      clock.Set(time);
      encoder.ProcessFrameAsync(picture_.Frame(time));
      const Tone tone{1000, i < kQuietChunks ? 0 : 0.5};
      encoder.ProcessAudioFrame(ToneBytes(format, {tone}, i * kChunk, kChunk), "microphone");
    }
    EXPECT_TRUE(encoder.Stop());
    const auto sounds = ReadSounds(path());
    ASSERT_THAT(sounds, SizeIs(1));
    const std::vector<float>& samples = sounds[0].channels.at(0);
    const auto loud = std::ranges::find_if(samples, [](float sample) { return std::abs(sample) > 0.2F; });
    ASSERT_NE(loud, samples.end());
    const double expected = begin / 1000.0 + static_cast<double>(kQuietChunks * kChunk) / kRate;
    EXPECT_NEAR(sounds[0].secondsOf(static_cast<std::size_t>(loud - samples.begin())), expected, 0.003);
  }
  ExpectNoProblem();
}

TEST_P(SoundCodecs, KeepTwoSoundsApart) {
  const WaveFormat microphone = DeviceFormat(SampleType::kSigned16, 1, 44'100);
  const WaveFormat speaker = DeviceFormat(SampleType::kFloat32, 2, 48'000);
  const Tone voice{440, 0.5};
  const Tone music{1300, 0.3};
  FFmpegEncoder encoder(Settings(), std::chrono::steady_clock::now, Options());
  ASSERT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
  ASSERT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &microphone));
  ASSERT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kSpeaker, &speaker));
  ASSERT_TRUE(encoder.Start());
  for (std::size_t i = 0; i < 100; ++i) {
    encoder.ProcessFrameAsync(picture_.Frame(static_cast<std::int64_t>(i) * 10));
    encoder.ProcessAudioFrame(ToneBytes(microphone, {voice}, i * 441, 441), "microphone");
    encoder.ProcessAudioFrame(ToneBytes(speaker, {music, music}, i * 480, 480), "speaker");
  }
  EXPECT_TRUE(encoder.Stop());
  EXPECT_EQ(CountStreams(path()), 3U);
  const auto sounds = ReadSounds(path());
  ASSERT_THAT(sounds, SizeIs(2));
  EXPECT_EQ(sounds[0].title, "Microphone");
  EXPECT_EQ(sounds[1].title, "Speaker");
  ExpectTone(sounds[0].channels.at(0), voice, sounds[0].sampleRate);
  ExpectTone(sounds[1].channels.at(1), music, sounds[1].sampleRate);
  EXPECT_LT(Middle(sounds[0].channels[0], music, sounds[0].sampleRate).level, 0.005);
  EXPECT_LT(Middle(sounds[1].channels[0], voice, sounds[1].sampleRate).level, 0.005);
  ExpectNoProblem();
}

TEST_P(SoundCodecs, TakeEveryBitRate) {
  const WaveFormat format = DeviceFormat(SampleType::kFloat32, 2, 48'000);
  const Tone tone{440, 0.5};
  std::uintmax_t last = 0;
  for (const std::int32_t bitRate : {1, 64'000, std::numeric_limits<std::int32_t>::max()}) {
    SCOPED_TRACE(bitRate);
    const DecodedAudio sound = Recorded(format, ToneBytes(format, {tone, {3000, 0.3}}, 0, 96'000), bitRate);
    EXPECT_GE(sound.samples() + 1000, 96'000U);
    EXPECT_GT(Middle(sound.channels.at(0), tone, 48'000).level, tone.level / 3);
    EXPECT_GT(sound.bytes, last);
    last = sound.bytes;
  }
  ExpectNoProblem();
}

TEST_P(SoundCodecs, TakeEveryRateOfADevice) {
  for (const std::uint32_t rate : {1'000, 8'000, 11'025, 16'000, 22'050, 32'000, 88'200, 96'000, 192'000}) {
    SCOPED_TRACE(rate);
    const WaveFormat format = DeviceFormat(SampleType::kFloat32, 1, rate);
    const Tone tone{300, 0.5};
    const DecodedAudio sound = Recorded(format, ToneBytes(format, {tone}, 0, std::size_t{2} * rate));
    ExpectTone(sound.channels.at(0), tone, sound.sampleRate);
  }
  ExpectNoProblem();
}

// A file with more than stereo plays hardly anywhere.
TEST_P(SoundCodecs, LeaveOutWhatHasMoreThanEightChannels) {
  for (const std::uint16_t channels : std::array<std::uint16_t, 4>{9, 16, 24, 64}) {
    const WaveFormat format = DeviceFormat(SampleType::kFloat32, channels, 48'000, true);
    FFmpegEncoder encoder(Settings(), std::chrono::steady_clock::now, Options());
    EXPECT_FALSE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format)) << channels;
    EXPECT_EQ(log_.lines().back(), "[ERROR] Could not open audio codec: Invalid argument");
  }
}

TEST_P(SoundCodecs, SurviveWhatIsNotSound) {
  constexpr std::array kValues{std::numeric_limits<float>::quiet_NaN(),
                               -std::numeric_limits<float>::infinity(),
                               std::numeric_limits<float>::max(),
                               std::numeric_limits<float>::denorm_min(),
                               1.5F,
                               -2.3e7F};
  std::vector<float> samples(96'000);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i] = kValues.at(i / 1700 % kValues.size());
  }
  std::vector<std::uint8_t> bytes(samples.size() * sizeof(float));
  std::memcpy(bytes.data(), samples.data(), bytes.size());
  const DecodedAudio sound = Recorded(DeviceFormat(SampleType::kFloat32, 2, 48'000), bytes);
  EXPECT_GE(sound.samples(), samples.size() / 2 - 480);
  ExpectNoProblem();
}

INSTANTIATE_TEST_SUITE_P(
    Of, SoundCodecs,
    ::testing::Values(SoundCase{"Mp3InMp4", SoundCodec::kMp3, "mpeg4", "file.mp4", false},
                      SoundCase{"Mp3InMp4InFragments", SoundCodec::kMp3, "mpeg4", "file.mp4", true},
                      SoundCase{"AacInMp4", SoundCodec::kAac, "mpeg4", "file.mp4", false},
                      SoundCase{"AacInMp4InFragments", SoundCodec::kAac, "mpeg4", "file.mp4", true},
                      SoundCase{"AacInMov", SoundCodec::kAac, "mpeg4", "file.mov", false},
                      SoundCase{"AacInMovInFragments", SoundCodec::kAac, "mpeg4", "file.mov", true},
                      SoundCase{"OpusInWebm", SoundCodec::kOpus, "libvpx", "file.webm", false},
                      SoundCase{"OpusInMp4", SoundCodec::kOpus, "mpeg4", "file.mp4", false},
                      SoundCase{"OpusInMp4InFragments", SoundCodec::kOpus, "mpeg4", "file.mp4", true}),
    [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace
}  // namespace brisolte
