#include "encoder/mf/aac_type.h"

#include <algorithm>

namespace brisolte {
namespace {

std::uint32_t Distance(std::uint32_t one, std::uint32_t other) {
  return one > other ? one - other : other - one;
}

/// The first of the two when some available type has it.
std::uint32_t Preferred(std::uint32_t first, std::uint32_t second, std::uint32_t AacType::* field,
                        std::span<const AacType> available) {
  return std::ranges::find(available, first, field) != available.end() ? first : second;
}

}  // namespace

std::optional<AacType> NearestAacType(const AacType& wanted, std::span<const AacType> available) {
  constexpr std::uint32_t kDiscRate = 44'100;
  constexpr std::uint32_t kStudioRate = 48'000;
  constexpr std::uint32_t kStereo = 2;
  const bool discMultiple = wanted.sampleRate % kDiscRate == 0;
  const std::uint32_t rate =
      Preferred(wanted.sampleRate, discMultiple ? kDiscRate : kStudioRate, &AacType::sampleRate, available);
  const std::uint32_t channels = Preferred(wanted.channels, kStereo, &AacType::channels, available);
  std::optional<AacType> nearest;
  for (const AacType& type : available) {
    const bool fits = type.sampleRate == rate && type.channels == channels;
    if (fits && (!nearest || Distance(type.bytesPerSecond, wanted.bytesPerSecond) <
                                 Distance(nearest->bytesPerSecond, wanted.bytesPerSecond))) {
      nearest = type;
    }
  }
  return nearest;
}

}  // namespace brisolte
