#pragma once

#include <audioclient.h>
#include <objbase.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "audio/wave_format_bytes.h"
#include "encoder/wave_format.h"

namespace brisolte {

struct CoTaskMemoryDeleter {
  void operator()(void* memory) const { CoTaskMemFree(memory); }
};

/// Memory that a COM method allocated for its caller.
template <typename T>
using CoTaskMemory = std::unique_ptr<T, CoTaskMemoryDeleter>;

/// An endpoint's mix format.
using MixFormat = CoTaskMemory<WAVEFORMATEX>;

/// Asks a client for its mix format. The format stays empty on failure.
inline HRESULT GetMixFormat(IAudioClient& client, MixFormat& format) {
  WAVEFORMATEX* raw = nullptr;
  const HRESULT result = client.GetMixFormat(&raw);
  format.reset(raw);
  return result;
}

/// The format without the platform's headers; none for none.
inline std::optional<WaveFormat> ToWaveFormat(const WAVEFORMATEX* format) {
  if (format == nullptr) {
    return std::nullopt;
  }
  return ReadWaveFormat(
      {reinterpret_cast<const std::uint8_t*>(format), sizeof(WAVEFORMATEX) + format->cbSize});
}

}  // namespace brisolte
