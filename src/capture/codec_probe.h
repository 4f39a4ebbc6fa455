#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace brisolte {

/// One of FFmpeg's video encoders that works on this machine.
struct CodecDescription {
  std::int32_t codecId = 0;               ///< FFmpeg's number of what the encoder produces
  std::string name;                       ///< the encoder's name, as `setEncoder` takes it
  std::string description;                ///< its long name; without one, the name
  std::vector<std::string> pixelFormats;  ///< names of the formats it lists, in its order
  bool isHardwareAccel = false;  ///< a hardware or hybrid encoder that this machine's device could open
};

/// The name by which people know an encoder: the long one, or `name` when that is missing (null) or empty.
std::string CodecLabel(const char* longName, const std::string& name);

/// Lists the video encoders, in FFmpeg's order. Software encoders are taken at their word; each hardware
/// encoder is opened for a test, at every call. Any thread; independent of recordings.
std::vector<CodecDescription> GetSupportedVideoCodecs();

}  // namespace brisolte
