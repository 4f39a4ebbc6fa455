#include "encoder/ffmpeg/pending_samples.h"

#include <algorithm>

#include "common/logger.h"

namespace brisolte {

void PendingSamples::Append(std::span<const std::uint8_t> bytes) {
  bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(taken_));
  taken_ = 0;
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

void PendingSamples::ReportBacklog(const std::string& name) const {
  const std::size_t keep = (samples() - samples() % kChunkSamples) * blockBytes_;
  if (bytes() > 2 * chunkBytes() && bytes() > keep) {
    Logger::Info("Adjusting " + name + " buffer - discarding " + std::to_string(bytes() - keep) +
                 " bytes (keeping " + std::to_string(keep) + " bytes)");
  }
}

std::span<const std::uint8_t> PendingSamples::Take() {
  const std::size_t size = std::min(samples(), kChunkSamples) * blockBytes_;
  const std::span<const std::uint8_t> chunk(bytes_.data() + taken_, size);
  taken_ += size;
  return chunk;
}

}  // namespace brisolte
