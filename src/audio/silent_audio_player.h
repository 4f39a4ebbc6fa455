#pragma once

#include <audioclient.h>
#include <mmdeviceapi.h>
#include <wrl/client.h>

#include <atomic>
#include <cstdint>
#include <optional>
#include <thread>

#include "audio/co_task_memory.h"
#include "encoder/wave_format.h"

namespace brisolte {

/// Plays something that nobody hears on a render endpoint, so that the endpoint's loopback delivers without
/// gaps. Used from one thread; it plays on a thread of its own.
class SilentAudioPlayer {
 public:
  SilentAudioPlayer() = default;
  SilentAudioPlayer(const SilentAudioPlayer&) = delete;
  SilentAudioPlayer& operator=(const SilentAudioPlayer&) = delete;
  ~SilentAudioPlayer() { StopSilentPlayback(); }

  /// Opens the endpoint; E_FAIL for null. What fails is logged and leaves nothing open.
  HRESULT InitializeSilentAudioPlayer(IMMDevice* device);

  /// Plays until stopped, from the start if it plays already. Without an open endpoint it only warns.
  void StartSilentPlayback();

  /// When it returns, the thread has ended. Nothing when nothing plays.
  void StopSilentPlayback();

  /// Stops, and lets go of the endpoint.
  void Release();

 private:
  HRESULT OpenClient(IAudioClient& client);
  void Play();
  void FillUntilStopped();
  bool TopUp(std::uint32_t& written);

  Microsoft::WRL::ComPtr<IAudioClient> client_;
  Microsoft::WRL::ComPtr<IAudioRenderClient> renderClient_;
  MixFormat mixFormat_;
  std::optional<WaveFormat> format_;
  UINT32 bufferFrames_ = 0;
  std::atomic<bool> playing_ = false;
  std::jthread thread_;
};

}  // namespace brisolte
