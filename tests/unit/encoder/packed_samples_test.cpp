#include "encoder/ffmpeg/packed_samples.h"

#include <gmock/gmock.h>

#include <array>
#include <limits>

namespace brisolte {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(PackedSamples, KeepTheirValueInTheUpperBits) {
  std::vector<std::int32_t> samples{9, 9, 9, 9, 9, 9, 9};
  const std::array<std::uint8_t, 15> packed{0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0xFF, 0xFF,
                                            0xFF, 0xFF, 0xFF, 0x7F, 0x00, 0x00, 0x80};
  UnpackSigned24(packed, samples);
  EXPECT_THAT(samples, ElementsAre(0, 256, -256, 0x7FFFFF00, std::numeric_limits<std::int32_t>::min()));
}

TEST(PackedSamples, AreWhole) {
  std::vector<std::int32_t> samples;
  const std::array<std::uint8_t, 5> packed{1, 2, 3, 4, 5};
  UnpackSigned24(packed, samples);
  EXPECT_THAT(samples, ElementsAre(0x03020100));
  UnpackSigned24({}, samples);
  EXPECT_THAT(samples, IsEmpty());
}

}  // namespace
}  // namespace brisolte
