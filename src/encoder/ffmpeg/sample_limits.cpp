#include "encoder/ffmpeg/sample_limits.h"

#include <algorithm>
#include <cmath>

namespace brisolte {

void LimitToFullScale(std::span<float> samples) {
  for (float& sample : samples) {
    sample = std::isnan(sample) ? 0.0F : std::clamp(sample, -1.0F, 1.0F);
  }
}

}  // namespace brisolte
