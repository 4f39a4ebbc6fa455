#include "audio/near_silence.h"

#include <algorithm>
#include <cstring>

namespace brisolte {
namespace {

template <typename Sample>
void Repeat(Sample sample, std::uint64_t count, std::span<std::uint8_t> buffer) {
  const std::uint64_t fitting = std::min<std::uint64_t>(count, buffer.size() / sizeof sample);
  for (std::uint64_t i = 0; i < fitting; ++i) {
    // Copied bytewise: nothing says that a device's buffer is aligned.
    std::memcpy(buffer.data() + i * sizeof sample, &sample, sizeof sample);
  }
}

}  // namespace

void FillWithNearSilence(const WaveFormat& format, std::uint32_t frames, std::span<std::uint8_t> buffer) {
  const auto type = SampleTypeOf(format);
  if (!type) {
    return;
  }
  const std::uint64_t samples = std::uint64_t{frames} * format.channels;
  switch (*type) {
    case SampleType::kFloat32:
      Repeat(1.0e-5F, samples, buffer);
      break;
    case SampleType::kSigned16:
      Repeat(std::int16_t{1}, samples, buffer);
      break;
    case SampleType::kSigned32:
      Repeat(std::int32_t{1}, samples, buffer);
      break;
    case SampleType::kUnsigned8:
      Repeat(std::uint8_t{0x80}, samples, buffer);
      break;
    case SampleType::kSigned24Packed:
      break;
  }
}

}  // namespace brisolte
