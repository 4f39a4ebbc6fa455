#pragma once

#include <cstdint>
#include <string>

namespace brisolte {

/// Which way an endpoint's sound goes; numbers as the platform's.
enum class AudioDataFlow : std::int32_t { kRender = 0, kCapture = 1 };

/// One active audio endpoint.
struct AudioDeviceInfo {
  std::string id;    ///< the endpoint's id, UTF-8
  std::string name;  ///< its friendly name, UTF-8
  bool isDefault = false;
  bool isActive = true;
  AudioDataFlow dataFlow = AudioDataFlow::kRender;
};

}  // namespace brisolte
