#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace brisolte {

/// Replaces `samples` by the whole three-byte samples in `packed` (little-endian, signed), each in the upper
/// bits of 32.
void UnpackSigned24(std::span<const std::uint8_t> packed, std::vector<std::int32_t>& samples);

}  // namespace brisolte
