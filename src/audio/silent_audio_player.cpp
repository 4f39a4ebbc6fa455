#include "audio/silent_audio_player.h"

#include <chrono>
#include <exception>
#include <string>
#include <system_error>

#include "audio/audio_thread_priority.h"
#include "audio/near_silence.h"
#include "audio/precise_wait.h"
#include "common/com_apartment.h"
#include "common/given_object.h"
#include "common/hresult_failure.h"
#include "common/logger.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

constexpr REFERENCE_TIME kBufferDuration = 100'000;  // 10 ms
constexpr std::chrono::milliseconds kRefillInterval(10);
constexpr std::chrono::milliseconds kFullBufferWait(1);

}  // namespace

HRESULT SilentAudioPlayer::InitializeSilentAudioPlayer(IMMDevice* device) {
  Logger::Info("Initializing silent audio player");
  Release();
  if (device == nullptr) {
    return E_FAIL;
  }
  ComPtr<IAudioClient> client;
  HRESULT result = Given(device->Activate(__uuidof(IAudioClient), CLSCTX_ALL, nullptr, &client), client);
  if (SucceededOrLog(result, "Failed to activate silent audio client: ")) {
    result = OpenClient(*client.Get());
  }
  if (FAILED(result)) {
    Release();
    return result;
  }
  client_ = std::move(client);
  return S_OK;
}

HRESULT SilentAudioPlayer::OpenClient(IAudioClient& client) {
  HRESULT result = GetMixFormat(client, mixFormat_);
  if (!SucceededOrLog(result, "Failed to get silent audio mix format: ")) {
    return result;
  }
  format_ = ToWaveFormat(mixFormat_.get());
  result = client.Initialize(AUDCLNT_SHAREMODE_SHARED, 0, kBufferDuration, 0, mixFormat_.get(), nullptr);
  if (!SucceededOrLog(result, "Failed to initialize silent audio client: ")) {
    return result;
  }
  result = client.GetBufferSize(&bufferFrames_);
  if (!SucceededOrLog(result, "Failed to get silent audio buffer size: ")) {
    return result;
  }
  result = Given(client.GetService(IID_PPV_ARGS(&renderClient_)), renderClient_);
  SucceededOrLog(result, "Failed to get silent audio render client: ");
  return result;
}

void SilentAudioPlayer::StartSilentPlayback() {
  if (client_ == nullptr || renderClient_ == nullptr) {
    Logger::Warning("Cannot start silent audio playback: client not initialized");
    return;
  }
  StopSilentPlayback();
  Logger::Info("Starting silent audio playback");
  playing_ = true;
  try {
    thread_ = std::jthread([this] { Play(); });
  } catch (const std::exception& error) {
    playing_ = false;
    Logger::Error(std::string("Failed to start silent audio thread: ") + error.what());
    return;
  }
  Logger::Info("Silent audio playback started");
}

void SilentAudioPlayer::StopSilentPlayback() {
  if (!playing_) {
    return;
  }
  Logger::Info("Stopping silent audio playback");
  playing_ = false;
  try {
    if (thread_.joinable()) {
      thread_.join();
    }
  } catch (const std::system_error& error) {
    Logger::Error(std::string("Exception joining silent audio thread: ") + error.what());
  }
  Logger::Info("Silent audio playback stopped");
}

void SilentAudioPlayer::Release() {
  StopSilentPlayback();
  renderClient_.Reset();
  client_.Reset();
  format_.reset();
  mixFormat_.reset();
  bufferFrames_ = 0;
}

void SilentAudioPlayer::Play() {
  const ComApartment com(COINIT_MULTITHREADED);
  const AudioThreadPriority priority;
  Logger::Info("Silent audio playback thread started");
  if (!SucceededOrLog(client_->Start(), "Failed to start silent audio client: ")) {
    return;
  }
  FillUntilStopped();
  client_->Stop();
  Logger::Info("Silent audio playback thread stopped");
}

void SilentAudioPlayer::FillUntilStopped() {
  const PreciseWait wait;
  std::uint32_t written = 0;
  while (playing_ && TopUp(written)) {
    wait.For(written > 0 ? kRefillInterval : kFullBufferWait);
  }
}

bool SilentAudioPlayer::TopUp(std::uint32_t& written) {
  written = 0;
  UINT32 padding = 0;
  if (!SucceededOrLog(client_->GetCurrentPadding(&padding), "Failed to get silent audio padding: ")) {
    return false;
  }
  if (padding >= bufferFrames_) {
    return true;
  }
  const UINT32 freeFrames = bufferFrames_ - padding;
  BYTE* data = nullptr;
  if (!SucceededOrLog(renderClient_->GetBuffer(freeFrames, &data), "Failed to get silent audio buffer: ")) {
    return false;
  }
  if (format_ && data != nullptr) {
    FillWithNearSilence(*format_, freeFrames, {data, std::size_t{freeFrames} * format_->blockAlign});
  }
  // Not flagged as silent, or the engine would play digital silence whatever the buffer holds.
  if (!SucceededOrLog(renderClient_->ReleaseBuffer(freeFrames, 0),
                      "Failed to release silent audio buffer: ")) {
    return false;
  }
  written = freeFrames;
  return true;
}

}  // namespace brisolte
