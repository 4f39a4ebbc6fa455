#include "encoder/ffmpeg/packed_samples.h"

#include <cstddef>

namespace brisolte {

void UnpackSigned24(std::span<const std::uint8_t> packed, std::vector<std::int32_t>& samples) {
  samples.resize(packed.size() / 3);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const auto bits = std::uint32_t{packed[3 * i]} << 8 | std::uint32_t{packed[3 * i + 1]} << 16 |
                      std::uint32_t{packed[3 * i + 2]} << 24;
    samples[i] = static_cast<std::int32_t>(bits);
  }
}

}  // namespace brisolte
