#include "audio/audio_capture.h"

#include <mmdeviceapi.h>
#include <wrl/client.h>

#include <atomic>
#include <chrono>
#include <exception>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "audio/audio_thread_priority.h"
#include "audio/capture_loop.h"
#include "audio/encoder_link.h"
#include "audio/endpoint_stream.h"
#include "audio/precise_wait.h"
#include "common/com_apartment.h"
#include "common/given_object.h"
#include "common/hresult_failure.h"
#include "common/logger.h"

namespace brisolte {
namespace {

/// What devices deliver at a time. Nothing is lost by waiting so long, and hardly a processor used.
constexpr std::chrono::milliseconds kWaitWhilePaused{10};

class AudioCapture final : public CaptureSource {
 public:
  AudioCapture(const CaptureSettings& settings, Encoder& encoder, std::shared_ptr<SoundControls> controls);
  AudioCapture(const AudioCapture&) = delete;
  AudioCapture& operator=(const AudioCapture&) = delete;
  ~AudioCapture() override;

  bool initialized() const override { return initialized_; }
  bool Start() override;
  void Pause() override { encoder_.Pause(); }
  void Resume() override { encoder_.Resume(); }
  void Stop() override;
  void DetachEncoder() override { encoder_.Detach(); }

 private:
  bool CreateEnumerator();
  bool Initialize(const CaptureSettings& settings, Encoder& encoder);
  void InitializeStream(EndpointStream& stream, const std::string& deviceId, Encoder& encoder);
  bool StopClients();
  bool JoinWorker();
  void Cleanup();

  // Declared first, so that COM is released after everything that uses it.
  std::optional<ComApartment> com_;
  Microsoft::WRL::ComPtr<IMMDeviceEnumerator> enumerator_;
  EncoderLink encoder_;
  const std::shared_ptr<SoundControls> controls_;
  EndpointStream microphone_;
  EndpointStream speaker_;
  bool initialized_ = false;
  bool cleanedUp_ = false;
  std::atomic<bool> running_ = false;
  std::jthread worker_;
};

AudioCapture::AudioCapture(const CaptureSettings& settings, Encoder& encoder,
                           std::shared_ptr<SoundControls> controls)
    : encoder_(encoder),
      controls_(std::move(controls)),
      microphone_(MicrophoneRole(), encoder_, controls_->microphone),
      speaker_(SpeakerRole(), encoder_, controls_->speaker) {
  Logger::Info("AudioCapture: Constructor");
  com_.emplace(COINIT_APARTMENTTHREADED);
  if (!SucceededOrLog(com_->result(), "AudioCapture: Failed to initialize COM: ") || !CreateEnumerator()) {
    return;
  }
  initialized_ = Initialize(settings, encoder);
  if (initialized_) {
    Logger::Info("AudioCapture: Successfully initialized");
  } else {
    Logger::Error("AudioCapture: Failed to initialize audio");
    // The owner may keep this object for long; an endpoint that is open for nothing shows as in use.
    Cleanup();
    enumerator_.Reset();
    com_.reset();
  }
}

bool AudioCapture::CreateEnumerator() {
  if (SucceededOrLog(Given(CoCreateInstance(__uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL,
                                            IID_PPV_ARGS(&enumerator_)),
                           enumerator_),
                     "AudioCapture: Failed to create device enumerator: ")) {
    return true;
  }
  com_.reset();
  return false;
}

bool AudioCapture::Initialize(const CaptureSettings& settings, Encoder& encoder) {
  Logger::Info("Initializing FFMPEG audio");
  InitializeStream(microphone_, settings.microphoneDeviceId, encoder);
  InitializeStream(speaker_, settings.speakerDeviceId, encoder);
  if (!microphone_.ready() && !speaker_.ready()) {
    Logger::Error("Failed to initialize both microphone and speaker streams");
    return false;
  }
  return true;
}

void AudioCapture::InitializeStream(EndpointStream& stream, const std::string& deviceId, Encoder& encoder) {
  if (deviceId.empty()) {
    return;
  }
  const EndpointRole& role = stream.role();
  Logger::Info("Initializing " + role.name + " with device ID: " + deviceId);
  if (!stream.Open(*enumerator_.Get(), deviceId)) {
    Logger::Error("Failed to initialize " + role.name);
    return;
  }
  stream.SetReady(encoder.CreateAudioStream(role.kind, stream.format()));
  if (stream.ready()) {
    Logger::Info(role.title + " audio stream created successfully");
  } else {
    Logger::Error("Failed to create " + role.name + " audio stream");
  }
}

AudioCapture::~AudioCapture() {
  if (running_) {
    Stop();
  }
  Cleanup();
}

bool AudioCapture::Start() {
  if (!initialized_) {
    Logger::Error("Cannot start audio processing: AudioCapture not initialized");
    return false;
  }
  if (running_.exchange(true)) {
    Logger::Warning("Audio processing thread already running");
    return true;
  }
  try {
    worker_ = std::jthread([this] {
      // The clients are free-threaded; the thread that calls them still has to be in an apartment.
      const ComApartment com(COINIT_MULTITHREADED);
      const AudioThreadPriority priority;
      const PreciseWait wait;
      Logger::Info("+++++++ Starting AudioCapture +++++++");
      RunCaptureLoop(running_, microphone_, speaker_,
                     [&](auto time) { wait.For(encoder_.paused() ? kWaitWhilePaused : time); });
    });
  } catch (...) {
    running_ = false;
    throw;
  }
  return true;
}

void AudioCapture::Stop() {
  if (!running_) {
    Logger::Info("Audio processing is not running");
    return;
  }
  running_ = false;
  // Whatever goes wrong with the clients, the worker must have ended afterwards.
  const bool clientsStopped = StopClients();
  if (JoinWorker() && clientsStopped) {
    Logger::Info("Audio capture stopped successfully");
  }
}

bool AudioCapture::StopClients() {
  try {
    Logger::Info("Stopping audio capture...");
    speaker_.StopPlayback();
    microphone_.StopClient();
    speaker_.StopClient();
    return true;
  } catch (const std::exception& error) {
    Logger::Error(std::string("Exception during audio capture stop: ") + error.what());
  } catch (...) {
    Logger::Error("Unknown exception during audio capture stop");
  }
  return false;
}

bool AudioCapture::JoinWorker() {
  try {
    if (worker_.joinable()) {
      worker_.join();
    }
    return true;
  } catch (const std::system_error& error) {
    Logger::Error(std::string("Exception joining audio thread: ") + error.what());
    return false;
  }
}

void AudioCapture::Cleanup() {
  if (std::exchange(cleanedUp_, true)) {
    return;
  }
  for (EndpointStream* stream : {&microphone_, &speaker_}) {
    try {
      stream->Cleanup();
    } catch (const std::exception& error) {
      Logger::Error("Exception cleaning up " + stream->role().name + ": " + error.what());
    }
  }
}

}  // namespace

std::unique_ptr<CaptureSource> CreateAudioCapture(const CaptureSettings& settings, Encoder& encoder,
                                                  std::shared_ptr<SoundControls> controls) {
  return std::make_unique<AudioCapture>(settings, encoder, std::move(controls));
}

}  // namespace brisolte
