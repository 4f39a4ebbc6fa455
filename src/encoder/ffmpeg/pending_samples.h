#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace brisolte {

/// The bytes of one source that are not encoded yet, cut into chunks of a fixed number of samples.
class PendingSamples {
 public:
  /// Samples of all channels in one chunk.
  static constexpr std::size_t kChunkSamples = 1024;

  /// `blockBytes`: bytes of one sample of all channels, at least 1.
  explicit PendingSamples(std::size_t blockBytes = 1) : blockBytes_(blockBytes) {}

  /// Appends what a source delivered. It need not end with a whole sample.
  void Append(std::span<const std::uint8_t> bytes);

  std::size_t bytes() const { return bytes_.size() - taken_; }
  std::size_t samples() const { return bytes() / blockBytes_; }
  std::size_t chunkBytes() const { return kChunkSamples * blockBytes_; }
  bool hasChunk() const { return bytes() >= chunkBytes(); }

  /// Says so in the log when more than two chunks have gathered and the last one is not whole. Nothing is
  /// removed: less than a chunk never is, and the rest is encoded at once.
  void ReportBacklog(const std::string& name) const;

  /// Takes the oldest samples away, a chunk's or as many as there are. Valid until the next `Append`.
  std::span<const std::uint8_t> Take();

 private:
  std::size_t blockBytes_;
  std::vector<std::uint8_t> bytes_;
  std::size_t taken_ = 0;  ///< bytes at the front of `bytes_`
};

}  // namespace brisolte
