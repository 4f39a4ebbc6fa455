#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "encoder/ffmpeg/ffmpeg_encoder.h"
#include "support/captured_log.h"
#include "support/decoded_audio.h"
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
using ::testing::HasSubstr;
using ::testing::Not;
using testing::Picture;
using testing::ReadSounds;
using ::testing::SizeIs;
using testing::TemporaryDirectory;
using testing::Tone;
using testing::ToneBytes;

// What an encoder holds back at the front, at most: its own delay, and less than a frame.
constexpr std::size_t kMostDelay = 1105 + 1152;

std::string NameOf(SampleType type) {
  switch (type) {
    case SampleType::kUnsigned8:
      return "Unsigned8";
    case SampleType::kSigned16:
      return "Signed16";
    case SampleType::kSigned24Packed:
      return "Signed24Packed";
    case SampleType::kSigned32:
      return "Signed32";
    case SampleType::kFloat32:
      return "Float32";
  }
  return "Unknown";
}

/// Hands over `count` samples in pieces of random sizes, also ones that end within a sample.
void Deliver(FFmpegEncoder& encoder, const std::string& stream, const std::vector<std::uint8_t>& bytes,
             unsigned seed) {
  std::mt19937 random(seed);
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t size = std::min<std::size_t>(1 + random() % 20'000, bytes.size() - at);
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    encoder.ProcessAudioFrame({begin, begin + static_cast<std::ptrdiff_t>(size)}, stream);
    at += size;
  }
}

/// The tone is there at its level, from the beginning to the end without a break, in which a jump of its
/// phase would leave much more than the encoder's noise.
void ExpectTone(std::span<const float> samples, const Tone& tone, double rate) {
  constexpr std::size_t kEdge = 3000;
  ASSERT_GT(samples.size(), 3 * kEdge);
  const auto middle = samples.subspan(kEdge, samples.size() - 2 * kEdge);
  const auto fit = FitTone(middle, tone.frequency, rate);
  EXPECT_NEAR(20 * std::log10(fit.level / tone.level), 0, 1);
  EXPECT_LT(fit.residual, tone.level / 10);
}

class SoundRecording : public ::testing::Test {
 protected:
  CaptureSettings Settings(const std::string& file) const {
    CaptureSettings settings;
    settings.encoderName = "mpeg4";
    settings.outputFilePath = directory_ / file;
    return settings;
  }

  /// Records the microphone alone and reads it back.
  DecodedAudio RecordSound(const WaveFormat& format, const std::vector<Tone>& tones, std::size_t samples,
                           const std::string& file = "sound.mp3") const {
    const auto seed = std::random_device()();
    SCOPED_TRACE(seed);
    FFmpegEncoder encoder(Settings(file));
    EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format));
    EXPECT_TRUE(encoder.Start());
    Deliver(encoder, "microphone", ToneBytes(format, tones, 0, samples), seed);
    EXPECT_TRUE(encoder.Stop());
    const auto sounds = ReadSounds(directory_ / file);
    EXPECT_THAT(sounds, SizeIs(1));
    return sounds.empty() ? DecodedAudio() : sounds.front();
  }

  const CapturedLog log_;
  const TemporaryDirectory directory_;
  const Picture picture_{Picture::Layout::kNv12, 64, 48, {90, 120, 60}};
};

struct Case {
  SampleType type;
  bool extensible;
};

class SampleFormats : public SoundRecording, public ::testing::WithParamInterface<Case> {};

TEST_P(SampleFormats, RecordsEverySampleAtItsLevel) {
  const WaveFormat format = DeviceFormat(GetParam().type, 2, 48'000, GetParam().extensible);
  const std::vector<Tone> tones{{440, 0.5}, {1000, 0.25}};
  const DecodedAudio sound = RecordSound(format, tones, 50'001);
  EXPECT_EQ(sound.codec, "mp3");
  EXPECT_EQ(sound.sampleRate, 48'000);
  EXPECT_EQ(sound.bitRate, 128'000);
  EXPECT_EQ(sound.samples(), 50'001U);
  ASSERT_THAT(sound.channels, SizeIs(2));
  ExpectTone(sound.channels[0], tones[0], 48'000);
  ExpectTone(sound.channels[1], tones[1], 48'000);
  EXPECT_THAT(log_.text(), Not(HasSubstr("[ERROR]")));
  EXPECT_THAT(log_.text(), Not(HasSubstr("write frame:")));
}

INSTANTIATE_TEST_SUITE_P(
    All, SampleFormats,
    ::testing::Values(Case{SampleType::kUnsigned8, false}, Case{SampleType::kSigned16, false},
                      Case{SampleType::kSigned24Packed, false}, Case{SampleType::kSigned32, false},
                      Case{SampleType::kFloat32, false}, Case{SampleType::kUnsigned8, true},
                      Case{SampleType::kSigned16, true}, Case{SampleType::kSigned24Packed, true},
                      Case{SampleType::kSigned32, true}, Case{SampleType::kFloat32, true}),
    [](const auto& instance) {
      return NameOf(instance.param.type) + (instance.param.extensible ? "Extensible" : "Plain");
    });

/// A number of channels, and how much of the left one is in the recording's left.
struct Share {
  std::uint16_t channels;
  double left;
};

std::ostream& operator<<(std::ostream& stream, const Share& value) {
  return stream << value.channels << " channels";
}

class ChannelCounts : public SoundRecording, public ::testing::WithParamInterface<Share> {};

TEST_P(ChannelCounts, KeepsTheLeftOnTheLeft) {
  const auto [channels, share] = GetParam();
  const WaveFormat format = DeviceFormat(SampleType::kFloat32, channels, 48'000, channels > 2);
  const Tone tone{500, 0.4};
  const Tone mixed{tone.frequency, tone.level * share};
  const DecodedAudio sound = RecordSound(format, {tone}, 40'000);
  EXPECT_EQ(sound.samples(), 40'000U);
  ASSERT_THAT(sound.channels, SizeIs(channels == 1 ? 1 : 2));
  ExpectTone(sound.channels[0], mixed, 48'000);
  if (channels > 1) {
    EXPECT_LT(FitTone(sound.channels[1], mixed.frequency, 48'000).level, mixed.level / 30);
  }
}

// Beside the left one there are, at 0.71, the middle, the left behind and the left at the side, and at 0.5
// the one behind the middle. The subwoofer is left out.
INSTANTIATE_TEST_SUITE_P(OneToEight, ChannelCounts,
                         ::testing::Values(Share{1, 1}, Share{2, 1}, Share{3, 1}, Share{4, 1 / 2.21},
                                           Share{5, 1 / 2.41}, Share{6, 1 / 2.41}, Share{7, 1 / 2.91},
                                           Share{8, 1 / 3.12}));

class Rates : public SoundRecording, public ::testing::WithParamInterface<std::uint32_t> {};

TEST_P(Rates, RecordsEverySample) {
  const WaveFormat format = DeviceFormat(SampleType::kSigned16, 1, GetParam());
  const Tone tone{300, 0.5};
  const std::size_t samples = std::size_t{2} * GetParam() + 77;
  const DecodedAudio sound = RecordSound(format, {tone}, samples);
  EXPECT_EQ(sound.sampleRate, static_cast<int>(GetParam()));
  EXPECT_EQ(sound.samples(), samples);
  ASSERT_THAT(sound.channels, SizeIs(1));
  ExpectTone(sound.channels[0], tone, GetParam());
}

TEST_P(Rates, FitIntoVideoFiles) {
  const WaveFormat format = DeviceFormat(SampleType::kSigned16, 1, GetParam());
  const Tone tone{300, 0.5};
  const std::size_t samples = std::size_t{2} * GetParam();
  for (const std::string file : {"file.mp4", "file.mov", "file.avi"}) {
    SCOPED_TRACE(file);
    const DecodedAudio sound = RecordSound(format, {tone}, samples, file);
    EXPECT_GE(sound.samples(), samples);
    EXPECT_LE(sound.samples(), samples + 2 * kMostDelay);
    ASSERT_THAT(sound.channels, SizeIs(1));
    ExpectTone(std::span(sound.channels[0]).first(samples), tone, GetParam());
  }
  EXPECT_THAT(log_.text(), Not(HasSubstr("[ERROR]")));
  EXPECT_THAT(log_.text(), Not(HasSubstr("write frame:")));
}

INSTANTIATE_TEST_SUITE_P(OfMp3, Rates,
                         ::testing::Values(8'000, 11'025, 12'000, 16'000, 22'050, 24'000, 32'000, 44'100,
                                           48'000));

class SurroundSound : public SoundRecording, public ::testing::WithParamInterface<std::uint16_t> {};

// Every speaker at full scale at once, with the same wave: the loudest that such a device can play.
TEST_P(SurroundSound, IsMixedToStereoWithoutClipping) {
  for (const SampleType type : {SampleType::kFloat32, SampleType::kSigned16, SampleType::kSigned32}) {
    SCOPED_TRACE(NameOf(type));
    const WaveFormat format = DeviceFormat(type, GetParam(), 48'000, true);
    const std::vector<Tone> tones(GetParam(), Tone{500, 1});
    const DecodedAudio sound = RecordSound(format, tones, 40'000);
    ASSERT_THAT(sound.channels, SizeIs(2));
    ExpectTone(sound.channels[0], tones[0], 48'000);
    ExpectTone(sound.channels[1], tones[1], 48'000);
  }
}

INSTANTIATE_TEST_SUITE_P(Of, SurroundSound, ::testing::Range<std::uint16_t>(4, 9));

struct Resampling {
  std::uint32_t device;
  int file;
};

class OtherRates : public SoundRecording, public ::testing::WithParamInterface<Resampling> {};

TEST_P(OtherRates, AreRecordedInOneThatMp3Has) {
  const auto& [device, rate] = GetParam();
  const WaveFormat format = DeviceFormat(SampleType::kFloat32, 2, device);
  const Tone tone{300, 0.5};
  const std::size_t samples = std::size_t{2} * device;
  const std::size_t expected = std::size_t{2} * static_cast<std::size_t>(rate);
  for (const std::string file : {"file.mp3", "file.mp4", "file.avi"}) {
    SCOPED_TRACE(file);
    const DecodedAudio sound = RecordSound(format, {tone, tone}, samples, file);
    EXPECT_EQ(sound.sampleRate, rate);
    // The filter's own delay comes on top of the encoder's.
    EXPECT_GE(sound.samples() + 2, expected);
    EXPECT_LE(sound.samples(), expected + 3 * kMostDelay);
    ASSERT_THAT(sound.channels, SizeIs(2));
    ExpectTone(std::span(sound.channels[1]).first(expected - 2), tone, rate);
  }
  EXPECT_TRUE(log_.has("[INFO] Resampling microphone from " + std::to_string(device) + " Hz to " +
                       std::to_string(rate) + " Hz, which MP3 has"));
  EXPECT_THAT(log_.text(), Not(HasSubstr("[ERROR]")));
}

INSTANTIATE_TEST_SUITE_P(OfDevices, OtherRates,
                         ::testing::Values(Resampling{6'000, 8'000}, Resampling{37'800, 44'100},
                                           Resampling{88'200, 44'100}, Resampling{96'000, 48'000},
                                           Resampling{176'400, 44'100}, Resampling{192'000, 48'000},
                                           Resampling{384'000, 48'000}),
                         [](const auto& instance) { return std::to_string(instance.param.device); });

TEST_F(SoundRecording, GoesOnWithTheOtherSourceWhenOneIsLeftOut) {
  const WaveFormat tooMany = DeviceFormat(SampleType::kFloat32, 9, 48'000);
  const WaveFormat format = DeviceFormat(SampleType::kFloat32, 2, 44'100);
  const Tone tone{700, 0.3};
  {
    FFmpegEncoder encoder(Settings("file.mp3"));
    EXPECT_FALSE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &tooMany));
    EXPECT_EQ(log_.lines().back(), "[ERROR] Could not open audio codec: Invalid argument");
    EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kSpeaker, &format));
    EXPECT_TRUE(encoder.Start());
    EXPECT_FALSE(encoder.ProcessAudioFrame(std::vector<std::uint8_t>(8192), "microphone"));
    EXPECT_EQ(log_.lines().back(), "[ERROR] Audio context not initialized for microphone");
    Deliver(encoder, "speaker", ToneBytes(format, {tone, tone}, 0, 44'100), 1);
    EXPECT_TRUE(encoder.Stop());
  }
  const auto sounds = ReadSounds(directory_ / "file.mp3");
  ASSERT_THAT(sounds, SizeIs(1));
  EXPECT_EQ(sounds[0].samples(), 44'100U);
  ExpectTone(sounds[0].channels[0], tone, 44'100);
}

TEST_F(SoundRecording, KeepsTwoSourcesApartBesideThePicture) {
  const WaveFormat microphone = DeviceFormat(SampleType::kSigned16, 1, 44'100);
  const WaveFormat speaker = DeviceFormat(SampleType::kFloat32, 6, 48'000, true);
  const Tone voice{440, 0.5};
  const Tone music{1300, 0.3};
  const Tone mixedMusic{music.frequency, music.level / 2.41};
  for (const std::string file : {"both.mp4", "both.mov", "both.avi"}) {
    SCOPED_TRACE(file);
    FFmpegEncoder encoder(Settings(file));
    EXPECT_TRUE(encoder.InitializeVideoEncoder(64, 48, nullptr));
    EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &microphone));
    EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kSpeaker, &speaker));
    EXPECT_TRUE(encoder.Start());
    for (std::size_t i = 0; i < 100; ++i) {
      EXPECT_TRUE(encoder.ProcessFrameAsync(picture_.Frame(static_cast<std::int64_t>(i) * 10)));
      encoder.ProcessAudioFrame(ToneBytes(microphone, {voice}, i * 441, 441), "microphone");
      encoder.ProcessAudioFrame(ToneBytes(speaker, {music, music}, i * 480, 480), "speaker");
    }
    EXPECT_TRUE(encoder.Stop());
    const auto sounds = ReadSounds(directory_ / file);
    EXPECT_EQ(CountStreams(directory_ / file), 3U);
    ASSERT_THAT(sounds, SizeIs(2));
    EXPECT_EQ(sounds[0].title, "Microphone");
    EXPECT_EQ(sounds[1].title, "Speaker");
    EXPECT_EQ(sounds[0].sampleRate, 44'100);
    EXPECT_EQ(sounds[1].sampleRate, 48'000);
    ASSERT_THAT(sounds[0].channels, SizeIs(1));
    ASSERT_THAT(sounds[1].channels, SizeIs(2));
    EXPECT_GE(sounds[0].samples(), 44'100U);
    EXPECT_GE(sounds[1].samples(), 48'000U);
    ExpectTone(std::span(sounds[0].channels[0]).first(44'100), voice, 44'100);
    ExpectTone(std::span(sounds[1].channels[1]).first(48'000), mixedMusic, 48'000);
    EXPECT_LT(FitTone(sounds[0].channels[0], music.frequency, 44'100).level, 0.005);
    EXPECT_LT(FitTone(sounds[1].channels[0], voice.frequency, 48'000).level, 0.005);
  }
  EXPECT_THAT(log_.text(), Not(HasSubstr("[ERROR]")));
  EXPECT_THAT(log_.text(), Not(HasSubstr("write frame:")));
}

// Everything arrives within a few milliseconds, and still has times that a file can hold.
TEST_F(SoundRecording, HasRisingTimesInABurst) {
  const WaveFormat format = DeviceFormat(SampleType::kFloat32, 2, 48'000);
  for (const std::string file : {"file.mp4", "file.mov", "file.avi", "file.mp3"}) {
    SCOPED_TRACE(file);
    const DecodedAudio sound = RecordSound(format, {{440, 0.5}}, 96'000, file);
    EXPECT_GE(sound.packetSeconds.size(), 96'000U / 1152);
    for (std::size_t i = 1; i < sound.packetSeconds.size(); ++i) {
      EXPECT_GT(sound.packetSeconds[i], sound.packetSeconds[i - 1]);
    }
    EXPECT_THAT(sound.keyFrames, ::testing::Each(true));
  }
  EXPECT_THAT(log_.text(), Not(HasSubstr("write frame:")));
}

TEST_F(SoundRecording, HasTheSettingsFormatWithoutOneOfTheDevice) {
  CaptureSettings settings = Settings("file.mp3");
  settings.audioSampleRate = 32'000;
  settings.audioChannels = 1;
  const Tone tone{440, 0.5};
  {
    FFmpegEncoder encoder(settings);
    EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, nullptr));
    EXPECT_TRUE(encoder.Start());
    const WaveFormat format = DeviceFormat(SampleType::kFloat32, 1, 32'000);
    Deliver(encoder, "microphone", ToneBytes(format, {tone}, 0, 32'000), 1);
    EXPECT_TRUE(encoder.Stop());
  }
  const auto sounds = ReadSounds(directory_ / "file.mp3");
  ASSERT_THAT(sounds, SizeIs(1));
  EXPECT_EQ(sounds[0].sampleRate, 32'000);
  EXPECT_EQ(sounds[0].samples(), 32'000U);
  ASSERT_THAT(sounds[0].channels, SizeIs(1));
  ExpectTone(sounds[0].channels[0], tone, 32'000);
}

// What a broken driver or application may leave in a floating-point buffer; the MP3 encoder ends the process
// when it meets some of it.
TEST_F(SoundRecording, SurvivesWhatIsNotSound) {
  const WaveFormat format = DeviceFormat(SampleType::kFloat32, 2, 48'000);
  const std::vector<float> values{std::numeric_limits<float>::quiet_NaN(),
                                  -std::numeric_limits<float>::infinity(),
                                  std::numeric_limits<float>::max(),
                                  -3.0e20F,
                                  std::numeric_limits<float>::denorm_min(),
                                  1.5F,
                                  -2.3e7F};
  const auto seed = std::random_device()();
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  std::vector<float> samples(200'000);
  // In stretches, which the encoder takes worse than single ones.
  for (std::size_t at = 0; at < samples.size();) {
    const float value = values[random() % values.size()];
    for (auto length = 1 + random() % 3'000; length > 0 && at < samples.size(); --length) {
      samples[at++] = value;
    }
  }
  std::vector<std::uint8_t> bytes(samples.size() * sizeof(float));
  std::memcpy(bytes.data(), samples.data(), bytes.size());
  FFmpegEncoder encoder(Settings("sound.mp3"));
  EXPECT_TRUE(encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format));
  EXPECT_TRUE(encoder.Start());
  Deliver(encoder, "microphone", bytes, seed);
  EXPECT_TRUE(encoder.Stop());
  const auto sounds = ReadSounds(directory_ / "sound.mp3");
  ASSERT_THAT(sounds, SizeIs(1));
  EXPECT_GE(sounds.front().samples(), samples.size() / 2);
}

TEST_F(SoundRecording, KeepsASoundShorterThanAChunk) {
  const WaveFormat format = DeviceFormat(SampleType::kSigned16, 2, 44'100);
  EXPECT_EQ(RecordSound(format, {{440, 0.5}}, 100).samples(), 100U);
}

}  // namespace
}  // namespace brisolte
