#pragma once

#include <audioclient.h>
#include <wrl/client.h>

#include <cstdint>
#include <functional>
#include <string>

#include "audio/co_task_memory.h"

namespace brisolte::testing {

/// A stream that plays 32-bit float samples on a render endpoint. Used on one thread, which is in a COM
/// apartment.
class RenderClient {
 public:
  /// The value of one sample, the same in all channels; samples are counted from the stream's start.
  using Waveform = std::function<float(std::uint64_t sample)>;

  /// Opens the endpoint with this id (UTF-8). @throws std::runtime_error
  explicit RenderClient(const std::string& deviceId);

  /// Fills what is free of the buffer with the waveform's next samples. The first call starts the stream.
  /// @throws std::runtime_error
  void TopUp(const Waveform& waveform);

  /// Samples a second.
  std::uint32_t rate() const { return format_->nSamplesPerSec; }

  /// Seconds of the stream that have been heard. @throws std::runtime_error
  double SecondsHeard();

 private:
  Microsoft::WRL::ComPtr<IAudioClient> client_;
  Microsoft::WRL::ComPtr<IAudioRenderClient> renderer_;
  Microsoft::WRL::ComPtr<IAudioClock> clock_;
  MixFormat format_;
  UINT32 bufferFrames_ = 0;
  std::uint64_t written_ = 0;
};

/// The id of the render endpoint with this text in its name. @throws std::runtime_error
std::string FindRenderEndpoint(const std::string& name);

}  // namespace brisolte::testing
