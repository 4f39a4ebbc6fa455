#include <audioclient.h>
#include <gmock/gmock.h>
#include <wrl/client.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "audio/audio_capture.h"
#include "audio/audio_devices.h"
#include "recording_encoder.h"
#include "support/captured_log.h"
#include "tone.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::Contains;
using ::testing::Field;
using ::testing::HasSubstr;
using testing::RecordingEncoder;
using ::testing::SizeIs;
using testing::StrengthAt;
using testing::TonePlayer;

// The endpoints of the sound server that runs beside the tests: a speaker, a room with a loudspeaker in it,
// and a microphone that hears the room.
std::string IdOf(AudioDataFlow flow, const std::string& name) {
  for (const auto& device : EnumerateAudioDevices(flow)) {
    if (device.name.find(name) != std::string::npos) {
      return device.id;
    }
  }
  ADD_FAILURE() << "no endpoint is called " << name;
  return {};
}

class RealEndpoints : public ::testing::Test {
 protected:
  std::unique_ptr<CaptureSource> Capture(bool microphone, bool speaker) {
    CaptureSettings settings;
    if (microphone) {
      settings.microphoneDeviceId = IdOf(AudioDataFlow::kCapture, "Microphone");
    }
    if (speaker) {
      settings.speakerDeviceId = IdOf(AudioDataFlow::kRender, "Speaker");
    }
    auto capture = CreateAudioCapture(settings, encoder_);
    EXPECT_TRUE(capture->initialized()) << log_.text();
    return capture;
  }

  /// Bytes of so much sound of a stream, as its format has it.
  std::size_t Bytes(double seconds, std::size_t stream = 0) const {
    const auto& format = encoder_.streams().at(stream).second;
    return static_cast<std::size_t>(seconds * format->sampleRate) * format->blockAlign;
  }

  CapturedLog log_{LogLevel::kInfo};
  RecordingEncoder encoder_;
};

TEST_F(RealEndpoints, AreListedWithOneDefaultEach) {
  for (const auto flow : {AudioDataFlow::kRender, AudioDataFlow::kCapture}) {
    const auto devices = EnumerateAudioDevices(flow);
    EXPECT_EQ(std::ranges::count(devices, true, &AudioDeviceInfo::isDefault), 1);
    for (const auto& device : devices) {
      EXPECT_FALSE(device.id.empty());
      EXPECT_TRUE(device.isActive);
    }
  }
  EXPECT_THAT(EnumerateAudioDevices(AudioDataFlow::kRender),
              Contains(Field(&AudioDeviceInfo::name, HasSubstr("Room"))));
}

TEST_F(RealEndpoints, OfASpeakerDeliverWhileNothingElsePlays) {
  const auto capture = Capture(false, true);
  EXPECT_TRUE(capture->Start());
  EXPECT_TRUE(encoder_.WaitForBytes("speaker", Bytes(0.5)));
  capture->Stop();
  const auto samples = encoder_.delivered("speaker");
  EXPECT_EQ(samples.size() % encoder_.streams()[0].second->blockAlign, 0U);
  EXPECT_LT(StrengthAt(1'000, samples, *encoder_.streams()[0].second), 0.001);
}

TEST_F(RealEndpoints, DeliverTheirOwnSoundAndNotEachOthers) {
  const TonePlayer inTheRoom(IdOf(AudioDataFlow::kRender, "Room"), 440);
  const TonePlayer onTheSpeaker(IdOf(AudioDataFlow::kRender, "Speaker"), 1'000);
  const auto capture = Capture(true, true);
  EXPECT_TRUE(capture->Start());
  EXPECT_TRUE(encoder_.WaitForBytes("microphone", Bytes(1, 0)));
  EXPECT_TRUE(encoder_.WaitForBytes("speaker", Bytes(1, 1)));
  capture->Stop();
  ASSERT_THAT(encoder_.streams(), SizeIs(2));
  const auto strength = [this](double frequency, const std::string& name, std::size_t stream) {
    return StrengthAt(frequency, encoder_.delivered(name), *encoder_.streams()[stream].second);
  };
  EXPECT_GT(strength(440, "microphone", 0), 0.1);
  EXPECT_LT(strength(1'000, "microphone", 0), 0.01);
  EXPECT_GT(strength(1'000, "speaker", 1), 0.1);
  EXPECT_LT(strength(440, "speaker", 1), 0.01);
}

TEST_F(RealEndpoints, OfTheWrongDirectionAreRefused) {
  CaptureSettings settings;
  settings.microphoneDeviceId = IdOf(AudioDataFlow::kRender, "Speaker");
  EXPECT_FALSE(CreateAudioCapture(settings, encoder_)->initialized());
  EXPECT_THAT(log_.text(), HasSubstr("Failed to get microphone capture client: HRESULT: 0x8"));
}

TEST_F(RealEndpoints, CanBeUsedByTwoCapturesAtOnceAndAgain) {
  for (int round = 0; round < 3; ++round) {
    const auto first = Capture(true, true);
    const auto second = Capture(true, true);
    EXPECT_TRUE(first->Start());
    EXPECT_TRUE(second->Start());
  }
}

}  // namespace
}  // namespace brisolte
