#pragma once

#include <span>

namespace brisolte {

/// Brings every sample to full scale, from -1 to 1, and what is not a number to silence.
void LimitToFullScale(std::span<float> samples);

}  // namespace brisolte
