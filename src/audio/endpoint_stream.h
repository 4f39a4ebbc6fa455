#pragma once

#include <audioclient.h>
#include <mmdeviceapi.h>
#include <wrl/client.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "audio/capture_loop.h"
#include "audio/co_task_memory.h"
#include "audio/encoder_link.h"
#include "audio/endpoint_role.h"
#include "audio/silent_audio_player.h"
#include "audio/sound_control.h"
#include "encoder/wave_format.h"

namespace brisolte {

/// The sound of one endpoint: a microphone, or what a speaker plays. Opened, stopped and cleaned up on the
/// controller's thread; polled by the worker, which must have ended before the clean-up.
class EndpointStream : public PolledStream {
 public:
  /// `encoder` and `control` are borrowed.
  EndpointStream(EndpointRole role, EncoderLink& encoder, SoundControl& control)
      : role_(std::move(role)), encoder_(encoder), control_(control) {}

  /// Opens the endpoint with this id (UTF-8) and starts it; an open one is cleaned up first. Failures are
  /// logged; what was obtained until then is kept for the clean-up.
  bool Open(IMMDeviceEnumerator& enumerator, const std::string& deviceId);

  /// The endpoint's mix format, null when it has none. Valid until the clean-up.
  const WaveFormat* format() const { return format_ ? &*format_ : nullptr; }

  /// Whether the encoder takes the stream's sound; only then it is polled.
  void SetReady(bool ready) { ready_ = ready; }
  bool ready() const { return ready_; }

  const EndpointRole& role() const { return role_; }

  bool Poll(const std::atomic<bool>& running) override;

  void StopPlayback() { player_.StopSilentPlayback(); }
  void StopClient();

  /// Lets go of everything. Exceptions are logged.
  void Cleanup();

 private:
  bool FindDevice(IMMDeviceEnumerator& enumerator, const std::string& deviceId);
  bool ActivateClient();
  bool StartClient();
  void PrepareSilentPlayback();
  void LogWhenLost(HRESULT result);
  bool Gather(const std::atomic<bool>& running, std::vector<std::uint8_t>& samples);
  void Adjust(std::vector<std::uint8_t>& samples);
  bool TakePacket(std::vector<std::uint8_t>& samples);
  void CleanupLocked();
  void ReleaseResources();

  const EndpointRole role_;
  EncoderLink& encoder_;
  SoundControl& control_;
  std::mutex mutex_;  // an opening and a clean-up never overlap
  Microsoft::WRL::ComPtr<IMMDevice> device_;
  Microsoft::WRL::ComPtr<IAudioClient> client_;
  Microsoft::WRL::ComPtr<IAudioCaptureClient> captureClient_;
  MixFormat mixFormat_;
  std::optional<WaveFormat> format_;
  SilentAudioPlayer player_;
  bool open_ = false;
  bool ready_ = false;
  bool lost_ = false;
  std::optional<float> factor_;  ///< of what was delivered last
};

}  // namespace brisolte
