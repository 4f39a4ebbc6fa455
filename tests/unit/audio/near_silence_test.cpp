#include "audio/near_silence.h"

#include <gmock/gmock.h>

#include <vector>

namespace brisolte {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

constexpr std::uint8_t kUntouched = 0xEE;

WaveFormat Format(std::uint16_t bits, bool floatingPoint = false, std::uint16_t channels = 2) {
  WaveFormat format;
  format.channels = channels;
  format.bitsPerSample = bits;
  format.blockAlign = static_cast<std::uint16_t>(bits / 8 * channels);
  format.floatingPoint = floatingPoint;
  return format;
}

std::vector<std::uint8_t> Filled(const WaveFormat& format, std::uint32_t frames, std::size_t bytes) {
  std::vector<std::uint8_t> buffer(bytes, kUntouched);
  FillWithNearSilence(format, frames, buffer);
  return buffer;
}

TEST(NearSilence, IsATinyNumberForEachKindOfSample) {
  EXPECT_THAT(Filled(Format(32, true, 1), 2, 8), ElementsAre(0xAC, 0xC5, 0x27, 0x37, 0xAC, 0xC5, 0x27, 0x37));
  EXPECT_THAT(Filled(Format(16), 2, 8), ElementsAre(1, 0, 1, 0, 1, 0, 1, 0));
  EXPECT_THAT(Filled(Format(32), 1, 8), ElementsAre(1, 0, 0, 0, 1, 0, 0, 0));
  EXPECT_THAT(Filled(Format(8), 2, 4), Each(0x80));
}

TEST(NearSilence, LeavesSamplesOfOtherWidthsAsTheyAre) {
  EXPECT_THAT(Filled(Format(24), 2, 12), Each(kUntouched));
  EXPECT_THAT(Filled(Format(64, true), 2, 32), Each(kUntouched));
  EXPECT_THAT(Filled(Format(0), 2, 8), Each(kUntouched));
}

TEST(NearSilence, FillsNoMoreThanTheFramesAskedFor) {
  EXPECT_THAT(Filled(Format(16), 1, 6), ElementsAre(1, 0, 1, 0, kUntouched, kUntouched));
  EXPECT_THAT(Filled(Format(16), 0, 2), Each(kUntouched));
}

TEST(NearSilence, StaysInsideABufferThatIsTooSmallForTheFormat) {
  EXPECT_THAT(Filled(Format(16, false, 8), 1000, 5), ElementsAre(1, 0, 1, 0, kUntouched));
  FillWithNearSilence(Format(32, true), 1000, {});
}

}  // namespace
}  // namespace brisolte
