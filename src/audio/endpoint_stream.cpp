#include "audio/endpoint_stream.h"

#include <exception>

#include "audio/amplify.h"
#include "audio/wave_format_report.h"
#include "common/given_object.h"
#include "common/hresult_failure.h"
#include "common/logger.h"
#include "common/text.h"

namespace brisolte {
namespace {

/// Whether a stream that answers so never delivers again: its device is gone, the system's audio service has
/// ended, or the stream's resources were taken away.
bool IsLost(HRESULT result) {
  return result == AUDCLNT_E_DEVICE_INVALIDATED || result == AUDCLNT_E_SERVICE_NOT_RUNNING ||
         result == AUDCLNT_E_RESOURCES_INVALIDATED;
}

}  // namespace

bool EndpointStream::Open(IMMDeviceEnumerator& enumerator, const std::string& deviceId) {
  const std::scoped_lock lock(mutex_);
  if (open_) {
    CleanupLocked();
  }
  if (deviceId.empty()) {
    Logger::Info(role_.title + " device ID is empty");
    return false;
  }
  Logger::Info("Using specified " + role_.name + " device ID: " + deviceId);
  if (!FindDevice(enumerator, deviceId) || !ActivateClient() || !StartClient()) {
    return false;
  }
  open_ = true;
  Logger::Info(role_.title + " initialization completed successfully");
  return true;
}

bool EndpointStream::FindDevice(IMMDeviceEnumerator& enumerator, const std::string& deviceId) {
  if (!SucceededOrLog(Given(enumerator.GetDevice(ToWide(deviceId).c_str(), &device_), device_),
                      "Failed to get " + role_.name + " device by ID: ")) {
    return false;
  }
  DWORD state = 0;
  if (!SucceededOrLog(device_->GetState(&state), "Failed to get " + role_.name + " device state: ")) {
    return false;
  }
  if (state != DEVICE_STATE_ACTIVE) {
    Logger::Error(role_.title + " device is not active, current state: " + std::to_string(state));
    return false;
  }
  return true;
}

bool EndpointStream::ActivateClient() {
  if (!SucceededOrLog(
          Given(device_->Activate(__uuidof(IAudioClient), CLSCTX_ALL, nullptr, &client_), client_),
          "Failed to activate " + role_.name + " device: ")) {
    return false;
  }
  if (!SucceededOrLog(GetMixFormat(*client_.Get(), mixFormat_),
                      "Failed to get " + role_.name + " mix format: ")) {
    return false;
  }
  format_ = ToWaveFormat(mixFormat_.get());
  Logger::Info(WaveFormatReport(role_.title, format()));
  if (role_.needsPlayback) {
    PrepareSilentPlayback();
  }
  return SucceededOrLog(
      client_->Initialize(AUDCLNT_SHAREMODE_SHARED, role_.streamFlags, 0, 0, mixFormat_.get(), nullptr),
      "Failed to initialize " + role_.name + " audio client: ");
}

bool EndpointStream::StartClient() {
  if (!SucceededOrLog(Given(client_->GetService(IID_PPV_ARGS(&captureClient_)), captureClient_),
                      "Failed to get " + role_.name + " capture client: ")) {
    return false;
  }
  if (role_.needsPlayback) {
    player_.StartSilentPlayback();
  }
  return SucceededOrLog(client_->Start(), "Failed to start " + role_.name + " audio client: ");
}

void EndpointStream::PrepareSilentPlayback() {
  if (SucceededOrLog(player_.InitializeSilentAudioPlayer(device_.Get()),
                     "Failed to initialize silent audio player: ")) {
    Logger::Info("Silent audio player initialized successfully");
  } else {
    Logger::Warning("Continuing with speaker capture initialization without silent audio player");
  }
}

bool EndpointStream::Poll(const std::atomic<bool>& running) {
  if (!running || !ready_ || captureClient_ == nullptr || !format_) {
    return false;
  }
  std::vector<std::uint8_t> samples;
  if (!Gather(running, samples) || !running) {
    return false;
  }
  Adjust(samples);
  return encoder_.Deliver(samples, role_.name);
}

void EndpointStream::Adjust(std::vector<std::uint8_t>& samples) {
  const float factor = control_.factor();
  control_.Heard(Amplify(*format_, samples, factor_.value_or(factor), factor));
  factor_ = factor;
}

bool EndpointStream::Gather(const std::atomic<bool>& running, std::vector<std::uint8_t>& samples) {
  bool gathered = false;
  UINT32 packetFrames = 0;
  HRESULT result = captureClient_->GetNextPacketSize(&packetFrames);
  // A device that never runs dry must not keep the worker from ending.
  while (SUCCEEDED(result) && packetFrames != 0 && running) {
    if (!TakePacket(samples)) {
      captureClient_->ReleaseBuffer(0);
      return gathered;
    }
    gathered = true;
    result = captureClient_->GetNextPacketSize(&packetFrames);
  }
  LogWhenLost(result);
  return gathered;
}

/// Appends the next packet. False when there is none to release.
bool EndpointStream::TakePacket(std::vector<std::uint8_t>& samples) {
  BYTE* data = nullptr;
  UINT32 frames = 0;
  DWORD flags = 0;
  UINT64 devicePosition = 0;
  const HRESULT result = captureClient_->GetBuffer(&data, &frames, &flags, &devicePosition, nullptr);
  LogWhenLost(result);
  if (FAILED(result) || frames == 0 || data == nullptr) {
    return false;
  }
  samples.insert(samples.end(), data, data + std::size_t{frames} * format_->blockAlign);
  captureClient_->ReleaseBuffer(frames);
  return true;
}

void EndpointStream::LogWhenLost(HRESULT result) {
  if (IsLost(result) && !lost_) {
    lost_ = true;
    Logger::Warning(HResultFailure(role_.title + " device is gone, its sound ends here: ", result));
  }
}

void EndpointStream::StopClient() {
  if (client_ != nullptr) {
    client_->Stop();
  }
}

void EndpointStream::Cleanup() {
  const std::scoped_lock lock(mutex_);
  CleanupLocked();
}

void EndpointStream::CleanupLocked() {
  try {
    ReleaseResources();
    Logger::Info(role_.title + " resources cleaned up");
  } catch (const std::exception& error) {
    Logger::Error("Exception in Cleanup" + role_.title + ": " + error.what());
  } catch (...) {
    Logger::Error("Unknown exception in Cleanup" + role_.title);
  }
}

void EndpointStream::ReleaseResources() {
  player_.Release();
  captureClient_.Reset();
  StopClient();
  client_.Reset();
  device_.Reset();
  format_.reset();
  mixFormat_.reset();
  open_ = false;
  ready_ = false;
  lost_ = false;
  factor_.reset();
}

}  // namespace brisolte
