#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>

#include "audio/audio_capture.h"
#include "device_formats.h"
#include "fake_audio_service.h"
#include "recording_encoder.h"
#include "support/captured_log.h"

namespace brisolte::testing {

/// One that the system has no text for, so that its line is known byte for byte.
inline constexpr auto kFailure = static_cast<HRESULT>(0xA1234567);
inline const std::string kFailureText = "HRESULT: 0xa1234567 (HRESULT: 0xa1234567)";

/// A machine with the endpoints "mic" and "speaker", and settings that name both.
class AudioCaptureTest : public ::testing::Test {
 protected:
  AudioCaptureTest() {
    service_.endpoints = {
        {.id = "mic", .name = L"Microphone", .mixFormat = PlainFormat(1, 16, 1, 16'000)},
        {.id = "speaker", .name = L"Speaker", .mixFormat = ExtensibleFormat(kFloatSubFormat, 32, 2, 48'000)}};
    settings_.microphoneDeviceId = "mic";
    settings_.speakerDeviceId = "speaker";
  }

  /// Leaves only one of the two in the settings.
  void UseOnly(const std::string& id) {
    settings_.microphoneDeviceId = id == "mic" ? id : "";
    settings_.speakerDeviceId = id == "speaker" ? id : "";
  }

  std::unique_ptr<CaptureSource> Create() { return CreateAudioCapture(settings_, encoder_, controls_); }

  bool Logged(const std::string& text) const { return log_.text().find(text) != std::string::npos; }

  FakeEndpoint& microphone() { return service_.endpoints[0]; }
  FakeEndpoint& speaker() { return service_.endpoints[1]; }

  CapturedLog log_{LogLevel::kInfo};
  FakeAudioService service_;
  RecordingEncoder encoder_;
  CaptureSettings settings_;
  std::shared_ptr<SoundControls> controls_ = std::make_shared<SoundControls>();
};

}  // namespace brisolte::testing
