#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "capture/recording_parts.h"
#include "support/fake_desktop.h"

namespace brisolte::testing {

/// What happened to the parts of a controller, in order, and how they shall behave. Outlives the controller.
struct Stage {
  using Step = std::function<bool()>;

  std::vector<std::string> events;
  std::vector<CaptureSettings> settings;  ///< what each created encoder or capture was given
  std::vector<RecordingOptions> options;  ///< what each FFmpeg encoder and video capture was given
  RecordingParts::RecordingClock clock;   ///< of the encoder created last
  FakeDesktop desktop;

  bool hasDevice = true;
  bool hasEncoder = true;
  bool hasVideo = true;
  bool hasAudio = true;
  bool videoInitialized = true;
  bool audioInitialized = true;
  Step createEncoder = [] { return true; };
  Step createVideo = [] { return true; };
  Step startEncoder = [] { return true; };
  Step startVideo = [] { return true; };
  Step startAudio = [] { return true; };
  Step stopEncoder = [] { return true; };
  Step stopVideo = [] { return true; };
  Step stopAudio = [] { return true; };

  /// The events so far; the next call gives only later ones.
  std::vector<std::string> Take() { return std::exchange(events, {}); }
};

/// A step that raises an error.
inline Stage::Step Raises(const std::string& text) {
  return [text]() -> bool { throw std::runtime_error(text); };
}

/// A step that answers false.
inline bool Refuses() {
  return false;
}

class FakeEncoder : public Encoder {
 public:
  FakeEncoder(Stage& stage, std::string name) : stage_(stage), name_(std::move(name)) {
    stage_.events.push_back("create " + name_);
  }
  FakeEncoder(const FakeEncoder&) = delete;
  FakeEncoder& operator=(const FakeEncoder&) = delete;
  ~FakeEncoder() override { stage_.events.push_back("destroy " + name_); }

  bool Initialize() override { return true; }
  bool Start() override {
    stage_.events.push_back("start " + name_);
    return stage_.startEncoder();
  }
  bool Stop() override {
    stage_.events.push_back("stop " + name_);
    return stage_.stopEncoder();
  }
  bool ProcessFrameAsync(const VideoFrame& /*frame*/) override { return true; }
  bool ProcessAudioFrame(const std::vector<std::uint8_t>& /*samples*/, const std::string& /*name*/) override {
    return true;
  }
  bool InitializeVideoEncoder(std::uint32_t /*width*/, std::uint32_t /*height*/,
                              ID3D11Device* /*device*/) override {
    return true;
  }
  bool CreateAudioStream(AudioStreamKind /*kind*/, const WaveFormat* /*format*/) override { return true; }
  bool GetPixelFormat() override { return true; }
  bool Finalize() override { return true; }

 private:
  Stage& stage_;
  const std::string name_;
};

class FakeCapture : public CaptureSource {
 public:
  struct Behaviour {
    std::string name;
    bool initialized;
    Stage::Step& start;
    Stage::Step& stop;
  };

  FakeCapture(Stage& stage, Behaviour behaviour) : stage_(stage), behaviour_(std::move(behaviour)) {
    stage_.events.push_back("create " + behaviour_.name);
  }
  FakeCapture(const FakeCapture&) = delete;
  FakeCapture& operator=(const FakeCapture&) = delete;
  ~FakeCapture() override { stage_.events.push_back("destroy " + behaviour_.name); }

  bool initialized() const override { return behaviour_.initialized; }
  bool Start() override {
    stage_.events.push_back("start " + behaviour_.name);
    return behaviour_.start();
  }
  void Stop() override {
    stage_.events.push_back("stop " + behaviour_.name);
    behaviour_.stop();
  }
  void Pause() override { stage_.events.push_back("pause " + behaviour_.name + TellClock()); }
  void Resume() override { stage_.events.push_back("resume " + behaviour_.name + TellClock()); }
  void DetachEncoder() override { stage_.events.push_back("detach " + behaviour_.name); }

 private:
  std::string TellClock() const { return stage_.clock->paused() ? ", clock stands" : ", clock goes"; }

  Stage& stage_;
  const Behaviour behaviour_;
};

class FakeRecordingParts : public RecordingParts {
 public:
  explicit FakeRecordingParts(Stage& stage) : stage_(stage) {}

  bool CreateGraphicsDevice() override {
    if (stage_.hasDevice) {
      stage_.events.emplace_back("create device");
    }
    return stage_.hasDevice;
  }
  void ReleaseGraphicsDevice() override { stage_.events.emplace_back("destroy device"); }
  std::unique_ptr<Encoder> CreateFFmpegEncoder(const CaptureSettings& settings,
                                               const RecordingOptions& options,
                                               const RecordingClock& clock) override {
    stage_.clock = clock;
    stage_.options.push_back(options);
    return CreateEncoder(settings, "ffmpeg");
  }
  std::unique_ptr<Encoder> CreateMFEncoder(const CaptureSettings& settings,
                                           const RecordingClock& clock) override {
    stage_.clock = clock;
    return CreateEncoder(settings, "mf");
  }
  std::unique_ptr<CaptureSource> CreateVideoCapture(const CaptureSettings& settings,
                                                    const RecordingOptions& options, Encoder& /*encoder*/,
                                                    const RecordingClock& /*clock*/) override {
    stage_.options.push_back(options);
    stage_.createVideo();
    return CreateCapture(settings, stage_.hasVideo,
                         {"video", stage_.videoInitialized, stage_.startVideo, stage_.stopVideo});
  }
  std::unique_ptr<CaptureSource> CreateAudioCapture(
      const CaptureSettings& settings, Encoder& /*encoder*/,
      const std::shared_ptr<SoundControls>& /*controls*/) override {
    return CreateCapture(settings, stage_.hasAudio,
                         {"audio", stage_.audioInitialized, stage_.startAudio, stage_.stopAudio});
  }
  Desktop& desktop() override { return stage_.desktop; }
  std::vector<AudioDeviceInfo> ListMicrophones() override { return {{.id = "m", .name = "Microphone"}}; }
  std::vector<AudioDeviceInfo> ListSpeakers() override { return {{.id = "s", .name = "Speaker"}}; }
  bool CaptureScreenshot(const CaptureSettings& settings, const std::string& filePath) override {
    stage_.settings.push_back(settings);
    stage_.events.push_back("screenshot " + filePath);
    return true;
  }

 private:
  std::unique_ptr<Encoder> CreateEncoder(const CaptureSettings& settings, const std::string& name) {
    stage_.createEncoder();
    stage_.settings.push_back(settings);
    return stage_.hasEncoder ? std::make_unique<FakeEncoder>(stage_, name) : nullptr;
  }
  std::unique_ptr<CaptureSource> CreateCapture(const CaptureSettings& settings, bool exists,
                                               FakeCapture::Behaviour behaviour) {
    stage_.settings.push_back(settings);
    return exists ? std::make_unique<FakeCapture>(stage_, std::move(behaviour)) : nullptr;
  }

  Stage& stage_;
};

}  // namespace brisolte::testing
