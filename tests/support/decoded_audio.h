#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace brisolte::testing {

/// One audio stream of a file, decoded whole.
struct DecodedAudio {
  std::string codec;
  std::string title;  ///< what the container calls the stream: its title, else its handler
  int sampleRate = 0;
  std::int64_t bitRate = 0;
  std::uint64_t bytes = 0;  ///< of all packets
  std::vector<std::vector<float>> channels;
  std::vector<double> packetSeconds;     ///< presentation times in the file's order
  std::vector<double> frameSeconds;      ///< times of what was decoded
  std::vector<std::size_t> frameBegins;  ///< where in the channels what was decoded begins
  std::vector<bool> keyFrames;

  /// When the sample at `index` is heard.
  double secondsOf(std::size_t index) const;

  std::size_t samples() const { return channels.empty() ? 0 : channels.front().size(); }
};

/// Reads all audio streams of a file (UTF-8 path), in its order. Raises std::runtime_error saying what is
/// wrong with the file.
std::vector<DecodedAudio> ReadSounds(const std::string& path);

/// The number of streams of all kinds in a file.
unsigned CountStreams(const std::string& path);

}  // namespace brisolte::testing
